#pragma once

#include <deque>
#include <stdexcept>
#include <string>

#include "Platform/CaptureSystem.h"

// A scripted camera: it has what the test gave it, and notes what was asked of it.
namespace pravik::test {

class FakeCaptureDevice : public CaptureDevice {
 public:
  bool canExposeAtPoint = true;
  bool withTorch = true;
  /// When set, the device cannot be locked, for this reason.
  std::optional<std::string> lockFailure;

  int locks = 0;
  bool focuses = false;
  bool exposes = false;
  bool torchOn = false;
  std::vector<Point> exposurePoints;

  void lockForConfiguration() override {
    if (lockFailure) throw std::runtime_error(*lockFailure);
    ++locks;
  }
  void unlockForConfiguration() override { --locks; }
  bool supportsContinuousAutoFocus() const override { return true; }
  void setContinuousAutoFocus() override { focuses = true; }
  bool supportsContinuousAutoExposure() const override { return true; }
  void setContinuousAutoExposure() override { exposes = true; }
  bool supportsExposurePointOfInterest() const override { return canExposeAtPoint; }
  void setExposurePointOfInterest(Point point) override { exposurePoints.push_back(point); }
  bool hasTorch() const override { return withTorch; }
  bool isTorchOn() const override { return torchOn; }
  void setTorch(bool on) override { torchOn = on; }
};

class FakeCaptureSession : public CaptureSession {
 public:
  /// The next stills; when there is none left, photos fail.
  std::deque<CapturedPhoto> photos;
  bool acceptsInput = true;
  std::vector<MetadataObjectType> offeredTypes;
  std::optional<Bitmap> preview;

  std::vector<std::string> calls;
  bool running = false;
  std::vector<bool> photoFlashes;
  std::vector<MetadataObjectType> types;

  /// Sends what a running camera sends; it arrives when the session's queue runs.
  void sendFrame(const VideoFrame& frame) {
    if (running && frames_) frameQueue_->async([handler = frames_, frame] { handler(frame); });
  }
  void sendMetadata(const std::vector<MetadataObject>& objects) {
    if (running && metadata_) metadataQueue_->async([handler = metadata_, objects] { handler(objects); });
  }

  void beginConfiguration() override { calls.emplace_back("begin"); }
  void commitConfiguration() override { calls.emplace_back("commit"); }
  void usePhotoPreset() override { calls.emplace_back("photo preset"); }
  bool canAddInput(const CaptureDevice& /*device*/) const override { return acceptsInput; }
  void addInput(std::shared_ptr<CaptureDevice> /*device*/) override { calls.emplace_back("input"); }
  void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) override {
    calls.emplace_back("video output");
    frameQueue_ = std::move(queue);
    frames_ = std::move(handler);
  }
  void addPhotoOutput() override { calls.emplace_back("photo output"); }
  void addMetadataOutput(std::shared_ptr<SerialQueue> queue, MetadataHandler handler) override {
    calls.emplace_back("metadata output");
    metadataQueue_ = std::move(queue);
    metadata_ = std::move(handler);
  }
  bool isRunning() const override { return running; }
  void startRunning() override {
    calls.emplace_back("start");
    running = true;
  }
  void stopRunning() override {
    calls.emplace_back("stop");
    running = false;
  }
  bool supportsAutomaticFlash() const override { return true; }
  void capturePhoto(bool automaticFlash, PhotoHandler handler) override {
    photoFlashes.push_back(automaticFlash);
    if (photos.empty()) photos.push_back({std::nullopt, "no photo was scripted"});
    frameQueue_->async([handler = std::move(handler), photo = photos.front()] { handler(photo); });
    photos.pop_front();
  }
  std::vector<MetadataObjectType> availableMetadataObjectTypes() const override { return offeredTypes; }
  void setMetadataObjectTypes(const std::vector<MetadataObjectType>& asked) override { types = asked; }
  std::optional<Bitmap> previewPicture() const override { return preview; }

 protected:
  std::shared_ptr<SerialQueue> frameQueue_;
  std::shared_ptr<SerialQueue> metadataQueue_;
  FrameHandler frames_;
  MetadataHandler metadata_;
};

class FakeCaptureSystem : public CaptureSystem {
 public:
  CameraAuthorizationStatus status = CameraAuthorizationStatus::authorized;
  std::shared_ptr<FakeCaptureDevice> device = std::make_shared<FakeCaptureDevice>();
  /// The one session that is handed out.
  std::shared_ptr<FakeCaptureSession> session = std::make_shared<FakeCaptureSession>();
  /// The users who were asked and have not answered.
  std::vector<std::function<void(bool)>> questions;

  CameraAuthorizationStatus authorizationStatus() const override { return status; }
  void requestAccess(std::function<void(bool)> completion) override { questions.push_back(std::move(completion)); }
  std::shared_ptr<CaptureDevice> backCamera() override { return device; }
  std::shared_ptr<CaptureSession> makeSession() override { return session; }
};

}  // namespace pravik::test
