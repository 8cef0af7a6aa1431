#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "blackbox/Tool.h"
#include "support/VideoFiles.h"

namespace pravik::cli {
namespace {

const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

/// A video at 30 frames a second in which a sample's picture comes into view after a moment and then stays.
std::string videoOf(const test::VideoFolder& folder, const std::string& sample) {
  cv::Mat picture = cv::imread((samples / sample).string());
  const double scale = 1280.0 / picture.cols;
  cv::resize(picture, picture, {}, scale, scale, cv::INTER_AREA);
  std::vector<cv::Mat> frames(5, cv::Mat(picture.size(), CV_8UC3, cv::mean(picture)));
  frames.insert(frames.end(), 10, picture);
  return folder.video("clip.avi", frames, 30);
}

TEST(Scan, readsACodeThatComesIntoView) {
  const test::VideoFolder folder;
  const std::string sample = "code-photo-0003.jpg";
  const ToolRun tool = runTool({"scan", videoOf(folder, sample), "--mode", "qrCode", "--format", "jsonl"});
  EXPECT_EQ(tool.status, allRecognized) << tool.out << tool.err;
  EXPECT_EQ(tool.answers().back()["result"],
            runTool({"code", "--format", "jsonl", (samples / sample).string()}).answers().at(0)["result"]);
}

}  // namespace
}  // namespace pravik::cli
