#include <gtest/gtest.h>

#include <map>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "blackbox/Tool.h"
#include "support/VideoFiles.h"

namespace pravik::cli {
namespace {

using nlohmann::json;

const std::map<std::string, std::string> modes{{"id-front", "idCardFront"}, {"bank-card", "bankCard"}};

TEST(Clips, AreScannedAsTheyWereDrawnAndAlikeEachTime) {
  const auto clips = truths("clips.jsonl");
  EXPECT_EQ(clips.size(), 2U);
  for (const json& truth : clips) {
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
}

/// A video at 30 frames a second in which a sample's picture comes into view after a moment and then stays.
std::string videoOf(const test::VideoFolder& folder, const std::string& sample) {
  cv::Mat picture = cv::imread((samples / sample).string());
  const double scale = 1280.0 / picture.cols;
  cv::resize(picture, picture, {}, scale, scale, cv::INTER_AREA);
  std::vector<cv::Mat> frames(5, cv::Mat(picture.size(), CV_8UC3, cv::mean(picture)));
  frames.insert(frames.end(), 10, picture);
  return folder.video("clip.avi", frames, 30);
}

TEST(Clips, ReadsACodeThatComesIntoView) {
  const test::VideoFolder folder;
  const std::string sample = "code-photo-0003.jpg";
  const ToolRun tool = runTool({"scan", videoOf(folder, sample), "--mode", "qrCode", "--format", "jsonl"});
  EXPECT_EQ(tool.status, allRecognized) << tool.out << tool.err;
  EXPECT_EQ(tool.answers().back()["result"],
            runTool({"code", "--format", "jsonl", (samples / sample).string()}).answers().at(0)["result"]);
}

}  // namespace
}  // namespace pravik::cli
