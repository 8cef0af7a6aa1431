#include <gtest/gtest.h>

#include "PravikVersion.h"
#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLine, wrongUsageEndsWithStatusTwoAndAWordOnTheErrorStream) {
  const std::vector<Words> cases{{},
                                 {"fly"},
                                 {"id-front"},
                                 {"id-front", "--format", "xml", "a.jpg"},
                                 {"id-front", "--jobs", "0", "a.jpg"},
                                 {"id-front", "--jobs", "many", "a.jpg"},
                                 {"id-front", "--threads", "-1", "a.jpg"},
                                 {"id-front", "--log-level", "loud", "a.jpg"},
                                 {"text", "--scene", "passport", "a.jpg"},
                                 {"code", "--scene", "idCard", "a.jpg"},
                                 {"parse"},
                                 {"parse", "passport"},
                                 {"stats", "a.jpg", "b.jpg"},
                                 {"scan"},
                                 {"scan", "a.avi"},
                                 {"scan", "--mode", "bankCard"},
                                 {"scan", "a.avi", "--mode", "passport"},
                                 {"scan", "a.avi", "--mode", "bankCard", "--timeout", "0"},
                                 {"scan", "a.avi", "--mode", "bankCard", "--timeout", "nan"},
                                 {"scan", "a.avi", "b.avi", "--mode", "bankCard"}};
  for (const Words& words : cases) {
    CommandRun command;
    EXPECT_EQ(command(words), usageError) << testing::PrintToString(words);
    EXPECT_EQ(command.out, "") << testing::PrintToString(words);
    EXPECT_NE(command.err, "") << testing::PrintToString(words);
  }
}

TEST(CommandLine, helpAndVersionSucceed) {
  for (const Words& words : std::vector<Words>{{"--help"}, {"id-front", "--help"}, {"parse", "id-back", "--help"}}) {
    CommandRun command;
    EXPECT_EQ(command(words), 0) << testing::PrintToString(words);
    EXPECT_NE(command.out.find("--format"), std::string::npos) << testing::PrintToString(words);
  }
  CommandRun command;
  EXPECT_EQ(command({"--version"}), 0);
  EXPECT_EQ(command.out, "pravik " + PravikVersion::fullDescription() + "\n");
}

TEST(CommandLine, optionsMayStandBeforeTheCommandOrBehindIt) {
  for (const Words& words : std::vector<Words>{{"--format", "jsonl", "--models", "m", "code", "a.jpg"},
                                               {"code", "a.jpg", "--format", "jsonl", "--models", "m"}}) {
    CommandRun command;
    command(words);
    EXPECT_EQ(command.lines().size(), 1U);
    EXPECT_EQ(command.options.modelDirectory, "m");
  }
}

TEST(CommandLine, theLogGoesToTheErrorStreamAndEndsWithTheCommand) {
  CommandRun command;
  command({"--log-level", "info", "code", "a.jpg", "--format", "jsonl"});
  EXPECT_NE(command.err.find("[Pravik]"), std::string::npos);
  EXPECT_EQ(command.lines().size(), 1U);
  EXPECT_EQ(OCRLogger::level(), OCRLogger::Level::none);
}

TEST(CommandLine, anOutputThatTakesNothingIsAnError) {
  CommandRun command;
  command.outputFails = true;
  EXPECT_EQ(command({"code", "--format", "jsonl", "a.jpg"}), usageError);
  EXPECT_NE(command.err.find("could not be written"), std::string::npos);
}

}  // namespace
}  // namespace pravik::cli
