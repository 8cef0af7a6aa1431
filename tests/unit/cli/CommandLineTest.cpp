#include <gtest/gtest.h>

#include "Records/PravikVersion.h"
#include "Utils/Text.h"
#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLine, WrongUsageEndsWithStatusTwoAndAWordOnTheErrorStream) {
  const std::pair<std::string, Words> commandsAndMistakes[] = {
      {"", {"", "fly", "id-front", "parse", "parse passport", "stats a.jpg b.jpg", "scan", "scan --mode bankCard"}},
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
