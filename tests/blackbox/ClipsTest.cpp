#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "blackbox/Tool.h"

namespace pravik::cli {
namespace {

using nlohmann::json;

const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

const std::map<std::string, std::string> modes{{"id-front", "idCardFront"}, {"bank-card", "bankCard"}};

TEST(Clips, areScannedAsTheyWereDrawnAndAlikeEachTime) {
  std::ifstream file(samples / "clips.jsonl");
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    const json truth = json::parse(line);
    SCOPED_TRACE(truth["video"]);
    const std::vector<std::string> words{"scan",     (samples / truth["video"].get<std::string>()).string(),
                                         "--mode",   modes.at(truth["kind"]),
                                         "--format", "jsonl"};
    const ToolRun tool = runTool(words);
    ASSERT_EQ(tool.status, allRecognized) << tool.out << tool.err;
    const json last = tool.answers().back();
    EXPECT_EQ(last["event"], "result");
    EXPECT_EQ(last["result"], truth["result"]);
    EXPECT_GT(last["time"], truth["heldStill"]) << "no card can be stable before it is still";
    EXPECT_EQ(runTool(words).out, tool.out);
  }
  EXPECT_EQ(count, 2);
}

}  // namespace
}  // namespace pravik::cli
