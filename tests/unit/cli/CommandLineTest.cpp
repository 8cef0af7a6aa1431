#include <gtest/gtest.h>

#include "Records/PravikVersion.h"
#include "Utils/Text.h"
#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLine, WrongUsageEndsWithStatusTwoAndAWordOnTheErrorStream) {
  const std::pair<std::string, Words> commandsAndMistakes[] = {
      {"",
       {"", "fly", "id-front", "parse", "parse passport", "stats a.jpg b.jpg", "scan", "scan --mode bankCard",
        "stats --format csv a.jpg", "parse id-front --format csv", "doctor --format csv"}},
      {"id-front a.jpg ", {"--format xml", "--jobs 0", "--jobs many", "--threads -1", "--log-level loud"}},
      {"text a.jpg --scene ", {"passport"}},
      {"code a.jpg --scene ", {"idCard"}},
      {"scan a.avi ", {"", "--mode passport", "b.avi --mode bankCard"}},
      {"scan a.avi --mode bankCard --timeout ", {"0", "nan"}},
  };
  for (const auto& [start, mistakes] : commandsAndMistakes)
    for (const std::string& mistake : mistakes) {
      const std::string line = start + mistake;
      const auto words = splitAtWhitespace(line);
      CommandRun command;
      EXPECT_EQ(command({words.begin(), words.end()}), usageError) << line;
      EXPECT_EQ(command.out, "") << line;
      EXPECT_NE(command.err, "") << line;
    }
}

TEST(CommandLine, AMistypedWordIsAnsweredWithTheNearestOne) {
  const std::pair<std::string, std::string> linesAndAnswers[] = {
      {"bank-crad a.jpg", "pravik: no command 'bank-crad'; did you mean 'bank-card'?"},
      {"idCardFrnt a.jpg", "pravik: no command 'idCardFrnt'; did you mean 'idCardFront'?"},
      {"parse --format jsonl id-frnt", "pravik: no command 'id-frnt'; did you mean 'id-front'?"},
      {"fly", "pravik: no command 'fly'"},
      {std::string(100'000, 'x'), "pravik: no command 'x"},
      {"id-front --formt json a.jpg", "pravik: no option '--formt'; did you mean '--format'?"},
      {"--jbos 2 code a.jpg", "pravik: no option '--jbos'; did you mean '--jobs'?"},
      {"code a.jpg --format jsno", "'jsno' is none of table, json, jsonl, csv; did you mean 'json'?"},
      {"scan a.avi --mode idfront", "none of bank-card, id-front, id-back, code; did you mean 'id-front'?"},
      {"stats a.jpg b.jpg", "pravik: unexpected word 'b.jpg'"},
  };
  for (const auto& [line, answer] : linesAndAnswers) {
    const auto words = splitAtWhitespace(line);
    CommandRun command;
    EXPECT_EQ(command({words.begin(), words.end()}), usageError) << line;
    EXPECT_NE(command.err.find(answer), std::string::npos) << command.err;
  }
}

TEST(CommandLine, KindsHaveTwoSpellings) {
  for (const Words& words : std::vector<Words>{{"idCardFront", "bad.jpg"},
                                               {"qrCode", "bad.jpg"},
                                               {"text", "--scene", "bankCard", "bad.jpg"},
                                               {"text", "--scene", "id-card", "bad.jpg"},
                                               {"parse", "idCardBack", "/no/file"},
                                               {"scene", "idCard", "/no/file"},
                                               {"scene", "id-card", "/no/file"},
                                               {"scene", "id-front", "/no/file"},
                                               {"scan", "/no/file", "--mode", "bankCard"},
                                               {"scan", "/no/file", "--mode", "bank-card"}}) {
    CommandRun command;
    EXPECT_EQ(command(words), someNotRecognized) << testing::PrintToString(words) << command.err;
  }
}

TEST(CommandLine, HelpAndVersionSucceed) {
  CommandRun command;
  for (const Words& words : std::vector<Words>{{"--help"}, {"id-front", "--help"}, {"parse", "id-back", "--help"}}) {
    EXPECT_EQ(command(words), 0) << testing::PrintToString(words);
    EXPECT_NE(command.out.find("--format"), std::string::npos) << testing::PrintToString(words);
  }
  EXPECT_EQ(command({"--version"}), 0);
  EXPECT_EQ(command.out, "pravik " + PravikVersion::fullDescription() + "\n");
}

TEST(CommandLine, OptionsMayStandBeforeTheCommandOrBehindIt) {
  for (const Words& words : std::vector<Words>{{"--format", "jsonl", "--models", "m", "code", "a.jpg"},
                                               {"code", "a.jpg", "--format", "jsonl", "--models", "m"}}) {
    CommandRun command;
    command(words);
    EXPECT_EQ(command.lines().size(), 1U);
    EXPECT_EQ(command.options.modelDirectory, "m");
  }
}

TEST(CommandLine, TheLogGoesToTheErrorStreamAndEndsWithTheCommand) {
  CommandRun command;
  command({"--log-level", "info", "code", "a.jpg", "--format", "jsonl"});
  EXPECT_NE(command.err.find("[Pravik]"), std::string::npos);
  EXPECT_EQ(command.lines().size(), 1U);
  EXPECT_EQ(OCRLogger::level(), OCRLogger::Level::none);
}

TEST(CommandLine, AnOutputThatTakesNothingIsAnError) {
  CommandRun command;
  command.outputFails = true;
  EXPECT_EQ(command({"code", "--format", "jsonl", "a.jpg"}), usageError);
  EXPECT_NE(command.err.find("could not be written"), std::string::npos);
}

}  // namespace
}  // namespace pravik::cli
