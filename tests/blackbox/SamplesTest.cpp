#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <thread>

#include "apps/pravik/PictureCommands.h"
#include "blackbox/Tool.h"
#include "blackbox/Truths.h"

namespace pravik::cli {
namespace {

using nlohmann::json;

class Samples : public testing::TestWithParam<json> {};

TEST_P(Samples, areReadAsTheyWereDrawn) {
  const json& truth = GetParam();
  const ToolRun tool =
      runTool({truth["kind"], "--format", "jsonl", (samples / truth["file"].get<std::string>()).string()});
  ASSERT_EQ(tool.status, allRecognized) << tool.out << tool.err;
  const json answer = tool.answers().at(0);
  EXPECT_EQ(answer["kind"], truth["kind"]);
  EXPECT_EQ(answer["result"], truth["result"]);
  const json checks = answer.value("checks", json::object());
  for (const auto& [check, passed] : checks.items()) EXPECT_TRUE(passed == true) << check;
}

std::string nameOf(const testing::TestParamInfo<json>& truth) {
  std::string name = truth.param["file"];
  std::erase_if(name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, Samples, testing::ValuesIn(truths()), nameOf);

TEST(SampleSet, isReadAlikeByThreadsThatShareOneSdk) {
  const PravikSDK sdk(realPlatform());
  const std::vector<json> all = truths();
  std::vector<std::jthread> threads;
  for (std::size_t first = 0; first < 8; ++first) {
    threads.emplace_back([&sdk, &all, first] {
      for (std::size_t i = first; i < all.size(); i += 8) {
        const auto& command = *std::ranges::find(pictureCommands(), all[i]["kind"], &PictureCommand::kind);
        const Image photo = realPlatform().imageCodec->load(samples / all[i]["file"].get<std::string>());
        EXPECT_EQ(json(command.answer(sdk, photo, {})["result"]), all[i]["result"]) << all[i]["file"];
      }
    });
  }
}

TEST(SampleSet, isNotTakenForWhatItIsNot) {
  for (const json& truth : truths()) {
    std::vector<std::pair<std::string, std::string>> refusals;
    if (truth["kind"] != "code") refusals.emplace_back("code", "insufficient_text");
    if (truth["level"] == "clean")
      refusals.emplace_back(truth["kind"] == "id-front" ? "id-back" : "id-front", "scene_mismatch");
    for (const auto& [command, error] : refusals) {
      const std::string file = (samples / truth["file"].get<std::string>()).string();
      const ToolRun tool = runTool({command, "--format", "jsonl", file});
      EXPECT_EQ(tool.status, someNotRecognized) << command << " " << file;
      EXPECT_EQ(tool.answers().at(0)["error"]["code"], error) << command << " " << file;
    }
  }
}

}  // namespace
}  // namespace pravik::cli
