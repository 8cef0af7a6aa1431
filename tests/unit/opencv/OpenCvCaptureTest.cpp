#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/AsioDispatch.h"
#include "backends/opencv/OpenCvCaptureSystem.h"
#include "backends/opencv/VideoReader.h"
#include "support/Fakes.h"
#include "support/ManualDispatch.h"
#include "support/VideoFiles.h"

namespace pravik {
namespace {

using std::chrono::milliseconds;
using test::plainFrame;
using testing::ElementsAre;

const VideoSource missingCamera{"/dev/no-such-camera", true};
/// A device, but none that takes pictures.
const VideoSource noCamera{"/dev/null", true};

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
  std::shared_ptr<test::ManualDispatch> dispatch = std::make_shared<test::ManualDispatch>();
  std::shared_ptr<SerialQueue> queue = dispatch->makeSerialQueue("test");
  std::shared_ptr<test::FakeBarcodeDetector> barcodes = std::make_shared<test::FakeBarcodeDetector>();
  std::shared_ptr<CaptureSession> session;
  std::vector<std::pair<milliseconds, int>> frames;
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
      frames.emplace_back(dispatch->now(), frame.pixels ? indexOf(*frame.pixels) : -1);
    });
    session->addMetadataOutput(queue, [this](const std::vector<MetadataObject>& objects) { codes = objects; });
  }

  std::vector<int> indices() const {
    std::vector<int> all;
    for (const auto& [time, index] : frames) all.push_back(index);
    return all;
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

TEST_F(OpenCvCapture, aFileGivesEachFrameAtItsTimeUntilItEnds) {
  PacedCamera camera(folder_.video("clip.avi", brightening(4)));
  EXPECT_TRUE(camera.photo().error);
  camera.session->startRunning();
  EXPECT_TRUE(camera.session->isRunning());
  camera.dispatch->advance(milliseconds(1000));
  EXPECT_THAT(camera.frames, ElementsAre(std::pair(milliseconds(0), 0), std::pair(milliseconds(100), 1),
                                         std::pair(milliseconds(200), 2), std::pair(milliseconds(300), 3)));
  EXPECT_FALSE(camera.session->isRunning());
  EXPECT_EQ(camera.end, "the video has ended");
  const CapturedPhoto photo = camera.photo();
  ASSERT_TRUE(photo.image && photo.image->bitmap);
  EXPECT_EQ(indexOf(*photo.image->bitmap), 3);
  EXPECT_EQ(indexOf(camera.session->previewPicture().value()), 3);
}

TEST_F(OpenCvCapture, aStoppedFileStandsStillAndGoesOnWhereItWas) {
  PacedCamera camera(folder_.video("clip.avi", brightening(5)));
  camera.session->startRunning();
  camera.dispatch->advance(milliseconds(150));
  camera.session->stopRunning();
  camera.dispatch->advance(milliseconds(1000));
  EXPECT_THAT(camera.indices(), ElementsAre(0, 1));
  // A frame that was on its way from before the stop does not come as well.
  camera.session->startRunning();
  camera.session->stopRunning();
  camera.session->startRunning();
  camera.dispatch->advance(milliseconds(150));
  EXPECT_THAT(camera.indices(), ElementsAre(0, 1, 2, 3, 4));
  camera.session.reset();
  camera.dispatch->advance(milliseconds(1000));
  EXPECT_EQ(camera.end, "");
}

TEST_F(OpenCvCapture, aLoopBeginsAnewAndAnEndedFileCanBeStartedAgain) {
  PacedCamera looping(folder_.video("clip.avi", brightening(2)), true);
  looping.session->startRunning();
  looping.dispatch->advance(milliseconds(450));
  EXPECT_THAT(looping.indices(), ElementsAre(0, 1, 0, 1, 0));

  PacedCamera once(folder_.video("clip.avi", brightening(2)));
  for (int i = 0; i < 2; ++i) {
    once.session->startRunning();
    once.dispatch->advance(milliseconds(1000));
  }
  EXPECT_THAT(once.indices(), ElementsAre(0, 1, 0, 1));
}

TEST_F(OpenCvCapture, inRealTimeFramesThatComeWhileTheQueueIsBusyAreDropped) {
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

TEST_F(OpenCvCapture, codesAreReadFromTheFramesWhenTheyAreAskedFor) {
  PacedCamera camera(folder_.video("clip.avi", brightening(6)));
  camera.barcodes->codes = {{"hello", {"VNBarcodeSymbologyEAN13"}, {}}};
  const auto offered = camera.session->availableMetadataObjectTypes();
  EXPECT_EQ(offered.size(), 11U);
  camera.session->startRunning();
  camera.dispatch->advance(milliseconds(250));
  EXPECT_TRUE(camera.codes.empty());

  camera.session->setMetadataObjectTypes({offered[0], offered[3]});
  camera.dispatch->advance(milliseconds(1000));
  EXPECT_THAT(camera.barcodes->symbologyCounts, ElementsAre(2U));
  ASSERT_EQ(camera.codes.size(), 1U);
  EXPECT_EQ(camera.codes[0].type.rawValue, "AVMetadataObjectTypeEAN13Code");
  EXPECT_EQ(camera.codes[0].stringValue, "hello");

  PacedCamera broken(folder_.video("clip.avi", brightening(3)));
  broken.barcodes->failure = "out of ink";
  broken.session->setMetadataObjectTypes(offered);
  broken.session->startRunning();
  broken.dispatch->advance(milliseconds(1000));
  EXPECT_EQ(broken.frames.size(), 3U);
  EXPECT_TRUE(broken.codes.empty());
}

TEST_F(OpenCvCapture, oddVideosArePlayedAsFarAsTheyGo) {
  std::vector<cv::Mat> grey;
  for (int i = 0; i < 3; ++i) grey.emplace_back(48, 64, CV_8UC1, cv::Scalar(100));
  const std::string truncated = folder_.video("truncated.avi", brightening(6));
  test::truncateFile(truncated, 0.7);
  const struct {
    std::string file;
    std::size_t leastFrames, mostFrames;
  } cases[] = {
      {folder_.video("grey.avi", grey), 3, 3},
      {folder_.video("tiny.avi", {plainFrame(1, {1, 1}), plainFrame(2, {1, 1})}), 2, 2},
      {folder_.motionJpeg("sizes.mjpeg",
                          {plainFrame(80, {64, 48}), plainFrame(80, {128, 96}), plainFrame(80, {32, 16})}),
       1, 3},
      {truncated, 1, 5},
  };
  for (const auto& [file, leastFrames, mostFrames] : cases) {
    PacedCamera camera(file);
    camera.session->startRunning();
    camera.dispatch->advance(milliseconds(5000));
    EXPECT_GE(camera.frames.size(), leastFrames) << file;
    EXPECT_LE(camera.frames.size(), mostFrames) << file;
    EXPECT_EQ(camera.end, "the video has ended") << file;
  }
}

TEST_F(OpenCvCapture, aSourceThatCannotBeUsedSaysWhy) {
  const std::string picture = folder_.write("picture.avi", "\x89PNG\r\n\x1a\n");
  const std::string cut = folder_.video("cut.avi", brightening(3));
  test::truncateFile(cut, 0.01);
  const std::vector<std::pair<VideoSource, std::string>> cases{
      {missingCamera, "no such camera"},
      {noCamera, "not a camera"},
      {videoSourceNamed("/dev/zero"), "not a camera"},
      {videoSourceNamed("987"), "no such camera"},
      {videoSourceNamed((folder_.path() / "none.avi").string()), "no such file"},
      {videoSourceNamed(""), "no such file"},
      {videoSourceNamed("http://127.0.0.1/clip.avi"), "no such file"},
      {videoSourceNamed(folder_.path().string()), "is a directory"},
      {videoSourceNamed(folder_.write("empty.avi", "")), "the file is empty"},
      {videoSourceNamed(folder_.write("text.avi", "this is no video")), "not a video, or damaged"},
      {videoSourceNamed(picture), "a picture, not a video"},
      {videoSourceNamed(folder_.motionJpeg("picture.jpg", {plainFrame(90)})), "a picture, not a video"},
      {videoSourceNamed(cut), "not a video, or damaged"},
  };
  for (const auto& [source, reason] : cases) {
    try {
      VideoReader reader(source);
      ADD_FAILURE() << source.path;
    } catch (const std::exception& error) {
      EXPECT_EQ(error.what(), reason) << source.path;
    }
    std::string end;
    const auto session =
        OpenCvCaptureSystem({.source = source, .onEnd = [&](const std::string& why) { end = why; }}).makeSession();
    session->addVideoOutput(test::ManualDispatch().makeSerialQueue("test"), {});
    session->startRunning();
    EXPECT_FALSE(session->isRunning()) << source.path;
    EXPECT_EQ(end, reason) << source.path;
  }
}

TEST_F(OpenCvCapture, thePermissionsOfTheFileDecideWhetherItMayBeUsed) {
  const std::string clip = folder_.video("clip.avi", brightening(1));
  OpenCvCaptureSystem mine({.source = videoSourceNamed(clip)});
  EXPECT_EQ(mine.authorizationStatus(), CameraAuthorizationStatus::authorized);
  EXPECT_NE(mine.backCamera(), nullptr);
  EXPECT_EQ(mine.backCamera(), mine.backCamera());
  OpenCvCaptureSystem missing({.source = missingCamera});
  EXPECT_EQ(missing.backCamera(), nullptr);

  OpenCvCaptureSystem device({.source = noCamera});
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
