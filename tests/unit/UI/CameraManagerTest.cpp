#include "UI/CameraManager.h"

#include <gtest/gtest.h>

#include "Platform/ManualDispatch.h"
#include "support/FakeCamera.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using Strings = std::vector<std::string>;

struct Camera {
  std::shared_ptr<test::FakeCaptureSystem> system = std::make_shared<test::FakeCaptureSystem>();
  std::shared_ptr<test::FakeCaptureSession> session = system->session;
  std::shared_ptr<ManualDispatch> dispatch = std::make_shared<ManualDispatch>();
  std::shared_ptr<CameraManager> manager = std::make_shared<CameraManager>(system, dispatch);
  std::vector<std::optional<Image>> photos;
  Strings codes;

  Camera() {
    manager->onPhotoCaptured = [this](std::optional<Image> photo) { photos.push_back(std::move(photo)); };
    manager->onCodeDetected = [this](const std::string& payload, const std::string& type) {
      codes.push_back(type + ": " + payload);
    };
  }
  void run() {
    manager->configure();
    manager->start();
    dispatch->runAll();
  }
};

TEST(CameraManager, SetsUpTheSessionOnceOnItsQueue) {
  Camera c;
  c.manager->configure();
  EXPECT_TRUE(c.session->calls.empty()) << "only on the session's queue";
  c.run();
  c.manager->start();
  c.manager->stop();
  c.manager->stop();
  c.dispatch->runAll();
  EXPECT_EQ(c.session->calls, (Strings{"begin", "photo preset", "input", "video output", "photo output",
                                       "metadata output", "commit", "start", "stop"}));
  EXPECT_TRUE(c.system->device->focuses && c.system->device->exposes);
  EXPECT_EQ(c.system->device->locks, 0);
  EXPECT_EQ(c.manager->previewLayer()->session, c.session);
}

TEST(CameraManager, LeavesNothingToAMainQueueThatRunsNoMore) {
  Camera c;
  c.run();
  const std::weak_ptr<PreviewView> preview = c.manager->previewLayer();
  c.manager.reset();
  EXPECT_TRUE(preview.expired());
}

TEST(CameraManager, StaysWithoutACameraAndSaysSoOnce) {
  const test::LogCapture log(OCRLogger::Level::warning);
  Camera refused;
  refused.session->acceptsInput = false;
  Camera absent;
  absent.system->device = nullptr;
  for (Camera* c : {&refused, &absent}) {
    c->run();
    c->manager->setCodeTypes({{"AVMetadataObjectTypeQRCode"}});
    c->manager->capturePhoto();
    c->manager->toggleTorch();
    c->manager->turnOffTorch();
    c->manager->lockExposureToPoint({0.5, 0.5});
    c->dispatch->runAll();
    EXPECT_FALSE(c->session->running);
    ASSERT_EQ(c->photos.size(), 1U);
    EXPECT_FALSE(c->photos[0]);
  }
  EXPECT_EQ(refused.session->calls, (Strings{"begin", "photo preset", "commit"}));
  EXPECT_EQ(log.count("无法配置后置摄像头"), 2);
  EXPECT_EQ(log.count("capturePhoto: session 未就绪（模拟器 / 权限未授权），跳过拍照"), 2);
}

TEST(CameraManager, DeliversFramesAndPhotosOfARunningCamera) {
  Camera c;
  int frames = 0;
  c.manager->onVideoFrame = [&](const VideoFrame&) {
    ++frames;
    throw std::runtime_error("the host is broken");
  };
  c.run();
  c.session->photos = {{Image{.bitmap = test::plainPicture(8, 6, 0, 0, 0)}, std::nullopt}, {}, {std::nullopt, "busy"}};
  for (int i = 0; i < 3; ++i) c.manager->capturePhoto();
  c.session->sendFrame({});
  c.session->sendFrame({});
  c.dispatch->runAll();
  EXPECT_EQ(frames, 2) << "an exception ends nothing";
  ASSERT_EQ(c.photos.size(), 3U);
  ASSERT_TRUE(c.photos[0]);
  EXPECT_EQ(c.photos[0]->bitmap->width(), 8);
  EXPECT_FALSE(c.photos[1] || c.photos[2]);
  EXPECT_EQ(c.session->photoFlashes, (std::vector{true, true, true}));

  c.manager->capturePhoto();
  c.manager.reset();
  c.dispatch->runAll();
  EXPECT_EQ(c.photos.size(), 3U);
  EXPECT_FALSE(c.session->running) << "it stops with its manager";
}

TEST(CameraManager, LooksForTheCodesThatTheCameraOffers) {
  const test::LogCapture log(OCRLogger::Level::debug);
  Camera c;
  c.session->offeredTypes = {{"AVMetadataObjectTypeEAN13Code"}, {"AVMetadataObjectTypeQRCode"}};
  c.run();
  c.manager->setCodeTypes({{"AVMetadataObjectTypeAztecCode"}});
  c.dispatch->runAll();
  EXPECT_TRUE(c.session->types.empty() && log.lines.empty());
  c.manager->setCodeTypes(
      {{"AVMetadataObjectTypeQRCode"}, {"AVMetadataObjectTypeAztecCode"}, {"AVMetadataObjectTypeEAN13Code"}});
  c.dispatch->runAll();
  EXPECT_EQ(log.count("条码检测已启用: AVMetadataObjectTypeQRCode, AVMetadataObjectTypeEAN13Code"), 1);

  const MetadataObject code{{"AVMetadataObjectTypeQRCode"}, "hello"};
  c.session->sendMetadata({{{"face"}, std::nullopt}, code});
  c.session->sendMetadata({{{"AVMetadataObjectTypeQRCode"}, ""}, code});
  c.session->sendMetadata({});
  c.session->sendMetadata({code, {{"AVMetadataObjectTypeEAN13Code"}, "4006381333931"}});
  c.dispatch->runAll();
  EXPECT_EQ(c.codes, (Strings{"QR Code: hello"})) << "only the first object counts";
}

TEST(CameraManager, SetsTorchAndExposureWhereTheDeviceCan) {
  const test::LogCapture log(OCRLogger::Level::debug);
  const Camera c;
  test::FakeCaptureDevice& device = *c.system->device;
  c.manager->lockExposureToPoint({-0.5, 1.5});
  EXPECT_EQ(device.exposurePoints, (std::vector<Point>{{0, 1}}));
  EXPECT_TRUE(device.exposes);
  device.lockFailure = "in use";
  c.manager->lockExposureToPoint({0.5, 0.5});
  c.manager->toggleTorch();
  EXPECT_EQ(log.count("曝光点锁定失败: in use"), 1);
  device.lockFailure.reset();
  device.canExposeAtPoint = false;
  device.withTorch = false;
  c.manager->lockExposureToPoint({0.5, 0.5});
  c.manager->toggleTorch();
  EXPECT_EQ(device.exposurePoints.size(), 1U);
  EXPECT_FALSE(device.torchOn);
}

TEST(PreviewView, MapsTheScreenToTheCamerasPicture) {
  PreviewView preview;
  EXPECT_EQ(preview.metadataOutputRectOfInterest({0, 0, 10, 10}), Rect{}) << "no picture yet";
  const auto session = std::make_shared<test::FakeCaptureSession>();
  preview.session = session;
  preview.frame = {0, 0, 100, 200};
  session->preview = test::plainPicture(40, 40, 0, 0, 0);
  EXPECT_EQ(preview.metadataOutputRectOfInterest({0, 0, 100, 200}), (Rect{0.25, 0, 0.5, 1})) << "the sides stick out";
  session->preview = test::plainPicture(10, 40, 0, 0, 0);
  EXPECT_EQ(preview.metadataOutputRectOfInterest({50, 100, 50, 100}), (Rect{0.5, 0.5, 0.5, 0.25}));
}

}  // namespace
}  // namespace pravik
