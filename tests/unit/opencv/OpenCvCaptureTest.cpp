#include <gmock/gmock.h>
#include <unistd.h>

#include <future>
#include <utility>
#include <vector>

#include "Platform/AsioDispatch.h"
#include "Platform/ManualDispatch.h"
#include "backends/opencv/camera/OpenCvCaptureSystem.h"
#include "support/Fakes.h"
#include "support/VideoFiles.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using test::plainFrame;
using testing::ElementsAre;

/// Frames that grow brighter, so that each can be told from the others.
std::vector<cv::Mat> brightening(int count) {
  std::vector<cv::Mat> frames;
  for (int i = 0; i < count; ++i) frames.push_back(plainFrame(40 * i));
  return frames;
}

/// Which of the brightening frames this is.
int indexOf(const Bitmap& frame) {
  return (frame.row(frame.height() / 2)[0] + 20) / 40;
}

/// A camera on a clock that is moved by hand, with everything that it sends.
struct PacedCamera {
  std::shared_ptr<ManualDispatch> dispatch = std::make_shared<ManualDispatch>();
  std::shared_ptr<SerialQueue> queue = dispatch->makeSerialQueue("test");
  std::shared_ptr<test::FakeBarcodeDetector> barcodes = std::make_shared<test::FakeBarcodeDetector>();
  std::shared_ptr<CaptureSession> session;
  std::vector<milliseconds> times;
  std::vector<int> frames;
  std::vector<MetadataObject> codes;
  std::string end;

  explicit PacedCamera(const std::string& file, bool loops = false) {
    session = OpenCvCaptureSystem({.source = videoSourceNamed(file),
                                   .loops = loops,
                                   .pacer = dispatch,
                                   .barcodeDetector = barcodes,
                                   .onEnd = [this](const std::string& reason) { end = reason; }})
                  .makeSession();
    session->addVideoOutput(queue, [this](const VideoFrame& frame) {
      times.push_back(dispatch->now());
      frames.push_back(indexOf(frame.pixels.value()));
    });
    session->addMetadataOutput(queue, [this](const std::vector<MetadataObject>& objects) { codes = objects; });
  }

  void run(milliseconds time) const {
    session->startRunning();
    dispatch->advance(time);
  }
  CapturedPhoto photo() const {
    CapturedPhoto taken;
    session->capturePhoto(false, [&](CapturedPhoto photo) { taken = std::move(photo); });
    return taken;
  }
};

class OpenCvCapture : public testing::Test {
 protected:
  test::VideoFolder folder_;
};

TEST_F(OpenCvCapture, AFileGivesEachFrameAtItsTimeUntilItEnds) {
  PacedCamera camera(folder_.video("clip.avi", brightening(4)));
  EXPECT_TRUE(camera.photo().error);
  camera.run(1000ms);
  EXPECT_THAT(camera.frames, ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(camera.times, ElementsAre(0ms, 100ms, 200ms, 300ms));
  EXPECT_FALSE(camera.session->isRunning());
  EXPECT_EQ(camera.end, "the video has ended");
  const CapturedPhoto photo = camera.photo();
  ASSERT_TRUE(photo.image && photo.image->bitmap);
  EXPECT_EQ(indexOf(*photo.image->bitmap), 3);
  EXPECT_EQ(indexOf(camera.session->previewPicture().value()), 3);
}

TEST_F(OpenCvCapture, AStoppedFileStandsStillAndGoesOnWhereItWas) {
  PacedCamera camera(folder_.video("clip.avi", brightening(5)));
  camera.run(150ms);
  camera.session->stopRunning();
  camera.dispatch->advance(1000ms);
  EXPECT_THAT(camera.frames, ElementsAre(0, 1));
  // A frame that was on its way from before the stop does not come as well.
  camera.session->startRunning();
  camera.session->stopRunning();
  camera.run(150ms);
  EXPECT_THAT(camera.frames, ElementsAre(0, 1, 2, 3, 4));
  camera.session.reset();
  camera.dispatch->advance(1000ms);
  EXPECT_EQ(camera.end, "");
}

TEST_F(OpenCvCapture, ALoopBeginsAnewAndAnEndedFileCanBeStartedAgain) {
  PacedCamera looping(folder_.video("clip.avi", brightening(2)), true);
  looping.run(450ms);
  EXPECT_THAT(looping.frames, ElementsAre(0, 1, 0, 1, 0));

  PacedCamera once(folder_.video("clip.avi", brightening(2)));
  once.run(1000ms);
  once.run(1000ms);
  EXPECT_THAT(once.frames, ElementsAre(0, 1, 0, 1));
}

TEST_F(OpenCvCapture, InRealTimeFramesThatComeWhileTheQueueIsBusyAreDropped) {
  AsioDispatch dispatch(1);
  std::promise<void> ended;
  std::shared_future<void> end = ended.get_future().share();
  const auto session = OpenCvCaptureSystem({.source = videoSourceNamed(folder_.video("clip.avi", brightening(5), 100)),
                                            .onEnd = [&](const std::string& /*reason*/) { ended.set_value(); }})
                           .makeSession();
  const auto queue = dispatch.makeSerialQueue("test");
  std::vector<int> seen;
  // The first frame keeps the queue busy for as long as the video lasts.
  session->addVideoOutput(queue, [&](const VideoFrame& frame) {
    seen.push_back(indexOf(*frame.pixels));
    end.wait();
  });
  std::promise<void> finished;
  queue->async([&] { session->startRunning(); });
  end.wait();
  queue->async([&] { finished.set_value(); });
  finished.get_future().wait();
  EXPECT_THAT(seen, ElementsAre(0));
  EXPECT_EQ(indexOf(session->previewPicture().value()), 4);
}

TEST_F(OpenCvCapture, CodesAreReadFromTheFramesWhenTheyAreAskedFor) {
  PacedCamera camera(folder_.video("clip.avi", brightening(9)));
  camera.barcodes->codes = {{"hello", {"VNBarcodeSymbologyEAN13"}, {}}};
  const auto offered = camera.session->availableMetadataObjectTypes();
  EXPECT_EQ(offered.size(), 11U);
  camera.run(50ms);
  EXPECT_TRUE(camera.codes.empty());

  camera.session->setMetadataObjectTypes({offered[0], offered[3]});
  camera.dispatch->advance(300ms);  // of three frames, one is looked at
  EXPECT_THAT(camera.barcodes->symbologyCounts, ElementsAre(2U));
  ASSERT_EQ(camera.codes.size(), 1U);
  EXPECT_EQ(camera.codes[0].type.rawValue, "AVMetadataObjectTypeEAN13Code");
  EXPECT_EQ(camera.codes[0].stringValue, "hello");
  camera.barcodes->failure = "out of ink";
  camera.dispatch->advance(1000ms);
  EXPECT_EQ(camera.frames.size(), 9U) << "frames come whether or not their codes can be read";
}

TEST_F(OpenCvCapture, OddVideosArePlayedAsFarAsTheyGo) {
  const std::string truncated = folder_.video("truncated.avi", brightening(6));
  test::truncateFile(truncated, 0.7);
  const std::pair<std::string, std::size_t> filesAndMostFrames[] = {
      {folder_.video("grey.avi", std::vector(3, cv::Mat(48, 64, CV_8UC1, cv::Scalar(100)))), 3},
      {folder_.video("tiny.avi", {plainFrame(1, {1, 1}), plainFrame(2, {1, 1})}), 2},
      {folder_.motionJpeg("sizes.mjpeg", {plainFrame(80, {64, 48}), plainFrame(80, {128, 96})}), 2},
      {truncated, 5},
  };
  for (const auto& [file, mostFrames] : filesAndMostFrames) {
    PacedCamera camera(file);
    camera.run(5000ms);
    EXPECT_GE(camera.frames.size(), 1U) << file;
    EXPECT_LE(camera.frames.size(), mostFrames) << file;
    EXPECT_EQ(camera.end, "the video has ended") << file;
  }
}

TEST_F(OpenCvCapture, ASourceThatCannotBeUsedSaysWhy) {
  const std::string cut = folder_.video("cut.avi", brightening(3));
  test::truncateFile(cut, 0.01);
  const std::vector<std::pair<std::string, std::string>> cases{
      {"/dev/null", "not a camera"},
      {"987", "no such camera"},
      {(folder_.path() / "none.avi").string(), "no such file"},
      {"", "no such file"},
      {"http://127.0.0.1/clip.avi", "no such file"},
      {folder_.path().string(), "is a directory"},
      {folder_.write("empty.avi", ""), "the file is empty"},
      {folder_.write("text.avi", "this is no video"), "not a video, or damaged"},
      {folder_.write("picture.avi", "\x89PNG\r\n\x1a\n"), "a picture, not a video"},
      {folder_.motionJpeg("picture.jpg", {plainFrame(90)}), "a picture, not a video"},
      {cut, "not a video, or damaged"},
  };
  for (const auto& [source, reason] : cases) {
    std::string end;
    const auto session =
        OpenCvCaptureSystem({.source = videoSourceNamed(source), .onEnd = [&](const std::string& why) { end = why; }})
            .makeSession();
    session->addVideoOutput(ManualDispatch().makeSerialQueue("test"), {});
    session->startRunning();
    EXPECT_FALSE(session->isRunning()) << source;
    EXPECT_EQ(end, reason) << source;
  }
}

TEST_F(OpenCvCapture, ThePermissionsOfTheFileDecideWhetherItMayBeUsed) {
  const std::string clip = folder_.video("clip.avi", brightening(1));
  OpenCvCaptureSystem mine({.source = videoSourceNamed(clip)});
  EXPECT_EQ(mine.authorizationStatus(), CameraAuthorizationStatus::authorized);
  EXPECT_NE(mine.backCamera(), nullptr);
  EXPECT_EQ(mine.backCamera(), mine.backCamera());
  OpenCvCaptureSystem missing({.source = videoSourceNamed("987")});
  EXPECT_EQ(missing.backCamera(), nullptr);

  OpenCvCaptureSystem device({.source = videoSourceNamed("/dev/null")});
  const auto controls = device.backCamera();
  EXPECT_FALSE(controls->hasTorch() || controls->isTorchOn() || controls->supportsContinuousAutoFocus() ||
               controls->supportsContinuousAutoExposure());

  std::filesystem::permissions(clip, std::filesystem::perms::none);
  if (::geteuid() == 0) GTEST_SKIP() << "everything is permitted to root";
  EXPECT_EQ(mine.authorizationStatus(), CameraAuthorizationStatus::denied);
  bool isGranted = true;
  mine.requestAccess([&](bool granted) { isGranted = granted; });
  EXPECT_FALSE(isGranted);
  EXPECT_EQ(problemWith(videoSourceNamed(clip)), "permission denied");
}

}  // namespace
}  // namespace pravik
