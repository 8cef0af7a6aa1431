#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/CaptureSystem.h"
#include "Platform/Dispatch.h"
#include "support/FakeCamera.h"

namespace pravik::test {

/// A camera that films a still picture, which may be exchanged, on the time of a dispatch.
class StillCamera : public CaptureSystem {
 public:
  StillCamera(std::shared_ptr<Dispatch> dispatch, Bitmap picture);

  void setPicture(Bitmap picture);
  /// What the camera reads from its pictures from now on; absent for nothing.
  void setCode(std::optional<MetadataObject> code);

  CameraAuthorizationStatus status = CameraAuthorizationStatus::authorized;
  /// Between two frames; for sessions that are made afterwards.
  std::chrono::milliseconds frameTime{33};
  /// How long a photo takes.
  std::chrono::milliseconds photoDelay{0};
  std::shared_ptr<FakeCaptureDevice> device = std::make_shared<FakeCaptureDevice>();

  CameraAuthorizationStatus authorizationStatus() const override { return status; }
  void requestAccess(std::function<void(bool)> completion) override { completion(false); }
  std::shared_ptr<CaptureDevice> backCamera() override { return device; }
  std::shared_ptr<CaptureSession> makeSession() override;

 private:
  struct Scene;
  class Session;

  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<Scene> scene_;
};

}  // namespace pravik::test
