#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <thread>

#include "apps/pravik/PictureCommands.h"
#include "blackbox/Tool.h"

namespace pravik::cli {
namespace {

using nlohmann::json;

class Samples : public testing::TestWithParam<json> {
 protected:
  static json answerOf(const std::string& command) {
    const std::string file = (samples / GetParam()["file"].get<std::string>()).string();
    return runTool({command, "--format", "jsonl", file}).answers().at(0);
  }
};

TEST_P(Samples, AreReadAsTheyWereDrawnAndNotTakenForWhatTheyAreNot) {
  const json& truth = GetParam();
  const std::string kind = truth["kind"];
  const json answer = answerOf(kind);
  EXPECT_EQ(answer["kind"], kind);
  EXPECT_EQ(answer["result"], truth["result"]) << answer;
  const json checks = answer.value("checks", json::object());
  for (const auto& [check, passed] : checks.items()) EXPECT_TRUE(passed == true) << check;

  const int turned = truth.value("turn", 0) + answer.value("turned", 0);
  EXPECT_NEAR(std::remainder(turned, 360), 0, 5) << "it is turned back, and what is upright is not";

  if (kind != "code") {
    EXPECT_EQ(answerOf("code")["error"]["code"], "insufficient_text");
  }
  if (truth["level"] == "clean") {
    const json other = answerOf(kind == "id-front" ? "id-back" : "id-front");
    EXPECT_EQ(other["error"]["code"], "scene_mismatch");
  }
}

std::string nameOf(const testing::TestParamInfo<json>& truth) {
  std::string name = truth.param["file"];
  std::erase_if(name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, Samples, testing::ValuesIn(truths()), nameOf);

TEST(SampleSet, IsReadAlikeByThreadsThatShareOneSdk) {
  const PravikSDK sdk(realPlatform());
  const std::vector<json> all = truths();
  std::vector<std::jthread> threads;
  for (std::size_t first = 0; first < 8; ++first) {
    threads.emplace_back([&sdk, &all, first] {
      for (std::size_t i = first; i < all.size(); i += 8) {
        const auto& command =
            *std::ranges::find(pictureCommands(), all[i]["kind"].get<std::string>(), &PictureCommand::kind);
        const Image photo = realPlatform().imageCodec->load(samples / all[i]["file"].get<std::string>());
        EXPECT_EQ(json(answerPicture(command, sdk, photo, {})["result"]), all[i]["result"]) << all[i]["file"];
      }
    });
  }
}

}  // namespace
}  // namespace pravik::cli
