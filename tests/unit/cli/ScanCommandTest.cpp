#include <gmock/gmock.h>

#include "support/VideoFiles.h"
#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

using test::plainFrame;
using testing::ElementsAre;
using testing::HasSubstr;
using Words = std::vector<std::string>;

constexpr int mid = 120, bright = 255;

/// The times and names of the events of one kind, with one of their members as text.
std::vector<std::string> told(const std::vector<Json>& events, const std::string& event, const std::string& member) {
  std::vector<std::string> values;
  for (const Json& one : events)
    if (one["event"] == event)
      values.push_back(one[member].is_string() ? one[member].get<std::string>() : one[member].dump());
  return values;
}

class ScanCommand : public testing::Test {
 protected:
  /// So many frames of a brightness, ten of which are a second.
  std::string clip(const std::vector<std::pair<int, int>>& parts) const {
    std::vector<cv::Mat> frames;
    for (const auto& [count, brightness] : parts)
      for (int i = 0; i < count; ++i) frames.push_back(plainFrame(brightness));
    return folder_.video("clip.avi", frames);
  }
  /// A card is in view for as long as the video lasts.
  void showCard() const { command_.rectangles->rectangles = {{{}, Rect{0.2, 0.3, 0.6, 0.4}, 0.9F}}; }
  /// The events of a scan.
  std::vector<Json> scan(const std::string& source, const std::string& mode, const Words& more = {}) {
    Words words{"scan", source, "--mode", mode, "--format", "jsonl"};
    words.insert(words.end(), more.begin(), more.end());
    status_ = command_(words);
    return command_.lines();
  }

  test::VideoFolder folder_;
  CommandRun command_;
  int status_ = -1;
};

TEST_F(ScanCommand, ACardHeldStillIsPhotographedAndRead) {
  showCard();
  command_.engine->blocks = portraitSide();
  const std::string file = clip({{30, mid}});
  const std::vector<Json> events = scan(file, "idCardFront");
  EXPECT_EQ(status_, allRecognized) << command_.out;
  EXPECT_THAT(told(events, "state", "state"), ElementsAre("detected", "capturing", "recognizing", "success"));
  EXPECT_THAT(told(events, "outline", "boundingBox"), ElementsAre(R"({"x":0.2,"y":0.3,"width":0.6,"height":0.4})"));
  EXPECT_THAT(told(events, "capture", "attempt"), ElementsAre("1"));
  const Json& last = events.back();
  EXPECT_EQ(last["event"], "result");
  EXPECT_EQ(last["file"], file);
  EXPECT_EQ(last["kind"], "id-front");
  EXPECT_EQ(last["result"]["idNumber"], "11010119900307123X");
  // The 24th frame, then the success that the user sees, then the screen closes.
  EXPECT_DOUBLE_EQ(last["time"], 2.3 + 0.3 + 0.3);

  const std::string first = command_.out;
  scan(file, "idCardFront");
  EXPECT_EQ(command_.out, first);
  const auto inRealTime = scan(folder_.video("fast.avi", std::vector<cv::Mat>(60, plainFrame(mid)), 200), "idCardFront",
                               {"--realtime", "--loop"});
  EXPECT_EQ(status_, allRecognized);
  EXPECT_EQ(inRealTime.back()["result"], last["result"]);
}

TEST_F(ScanCommand, ATableTellsEachEventOnALineAndThenTheRecord) {
  showCard();
  command_.engine->blocks = portraitSide();
  EXPECT_EQ(command_({"scan", clip({{30, mid}}), "--mode", "idCardFront"}), allRecognized);
  for (const char* line :
       {"    0.000  hint      将身份证人像面对准此区域\n",
        "    0.200  outline   x 0.200 y 0.300 width 0.600 height 0.400\n", "    2.300  capture   attempt 1\n",
        "    2.300  timer     0.3 s started\n", "    2.900  result    \n", "  idNumber    11010119900307123X"})
    EXPECT_THAT(command_.out, HasSubstr(line));
}

TEST_F(ScanCommand, GlareHoldsTheCardBackUntilItGoesAndTheButtonIsTapped) {
  showCard();
  command_.engine->blocks = portraitSide();
  const std::string file = clip({{40, bright}, {40, mid}});
  const std::vector<Json> events = scan(file, "idCardFront");
  EXPECT_EQ(status_, allRecognized);
  EXPECT_THAT(told(events, "timer", "change"), testing::Contains("fired"));
  EXPECT_THAT(told(events, "button", "shown"), ElementsAre("true", "false"));
  EXPECT_THAT(told(events, "tap", "button"), ElementsAre("manualCapture"));
  EXPECT_THAT(told(events, "state", "state"), ElementsAre("detected", "capturing", "recognizing", "success"));

  const std::vector<Json> untouched = scan(file, "idCardFront", {"--no-tap"});
  EXPECT_EQ(status_, someNotRecognized);
  EXPECT_THAT(told(untouched, "button", "shown"), ElementsAre("true"));
  EXPECT_EQ(untouched.back()["error"]["code"], "no_record");
}

TEST_F(ScanCommand, TheSecondFailureEndsTheScanWithItsError) {
  showCard();
  const std::vector<Json> events = scan(clip({{60, mid}}), "idCardFront");
  EXPECT_EQ(status_, someNotRecognized);
  EXPECT_THAT(told(events, "attempt", "attempt"), ElementsAre("1", "2"));
  EXPECT_EQ(events.back()["error"]["code"], "insufficient_text");

  command_.engine->failure = "the model is broken";
  command_.broken = {"rec.onnx: broken"};
  EXPECT_EQ(scan(clip({{60, mid}}), "idCardFront").back()["error"]["code"], "recognition_failed");
  EXPECT_EQ(status_, incompleteInstallation);
}

TEST_F(ScanCommand, CodesAreReadWithoutModels) {
  command_.missing = {"det.onnx: no such file"};
  command_.barcodes->codes = {{"hello", {"VNBarcodeSymbologyQR"}, {}}};
  const std::string file = clip({{10, mid}});
  for (const Words& more : std::vector<Words>{{}, {"--realtime"}}) {
    const Json last = scan(file, "qrCode", more).back();
    EXPECT_EQ(status_, allRecognized);
    EXPECT_EQ(last["result"], Json({{"payload", "hello"}, {"symbology", "QR Code"}}));
  }
  EXPECT_TRUE(scan(file, "bankCard").empty());
  EXPECT_EQ(status_, incompleteInstallation);
}

TEST_F(ScanCommand, TheEndOfTheVideoOrOfTheTimeEndsAScanThatHasReadNothing) {
  const std::string file = clip({{10, mid}});
  const struct {
    Words more;
    double time;
    std::string message;
  } cases[] = {{{}, 1, "the video has ended"}, {{"--loop", "--timeout", "7.5"}, 7.5, "no record within 7.5 seconds"}};
  for (const auto& [more, time, message] : cases) {
    const Json last = scan(file, "bankCard", more).back();
    EXPECT_EQ(status_, someNotRecognized);
    EXPECT_EQ(last["error"], Json({{"code", "no_record"}, {"message", message}}));
    EXPECT_DOUBLE_EQ(last["time"], time);
  }
  EXPECT_EQ(scan(file, "bankCard", {"--realtime", "--loop", "--timeout", "0.2"}).back()["error"]["code"], "no_record");

  // A photo that was taken of the last frame is still read.
  showCard();
  command_.engine->blocks = portraitSide();
  EXPECT_TRUE(scan(clip({{24, mid}}), "idCardFront").back().contains("result"));
}

TEST_F(ScanCommand, AnInterruptedScanStops) {
  command_.stop.request_stop();
  for (const Words& more : std::vector<Words>{{}, {"--realtime"}}) {
    scan(clip({{10, mid}}), "qrCode", more);
    EXPECT_EQ(status_, interrupted);
  }
}

TEST_F(ScanCommand, ASourceThatCannotBeScannedIsAnsweredWithTheReason) {
  // Why a source cannot be used is the camera's to say.
  const std::vector<std::pair<std::string, std::string>> cases{
      {"981", "no such camera"},
      {folder_.path().string(), "is a directory"},
      {folder_.video("none-yet.avi", {}), "no pictures"},
  };
  for (const auto& [source, reason] : cases) {
    for (const Words& more : std::vector<Words>{{}, {"--realtime"}}) {
      const std::vector<Json> events = scan(source, "qrCode", more);
      EXPECT_EQ(status_, someNotRecognized) << source;
      ASSERT_EQ(events.size(), 1U) << source;
      EXPECT_EQ(events[0]["error"]["code"], "invalid_input") << source;
      EXPECT_THAT(events[0]["error"]["message"].get<std::string>(), HasSubstr(reason)) << source;
    }
  }
}

}  // namespace
}  // namespace pravik::cli
