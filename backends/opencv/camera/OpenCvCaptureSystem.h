#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/BarcodeDetector.h"
#include "Platform/CaptureSystem.h"
#include "Platform/Dispatch.h"
#include "backends/opencv/camera/VideoSource.h"

namespace pravik {

/// Where the pictures of a capture system come from, and how.
struct OpenCvCameraOptions {
  VideoSource source;
  /// Whether a video file begins anew when it has ended.
  bool loops = false;
  /// When set, a video file keeps this dispatch's time: each frame waits for the delayed work that brings it, none is
  /// late, and on a clock that is moved by hand the same frames always come at the same times. Without one, a file is
  /// paced by the clock and late frames are dropped, as a camera's always are.
  std::shared_ptr<Dispatch> pacer = nullptr;
  /// Reads the codes on the frames; without one, no code type is offered.
  std::shared_ptr<const BarcodeDetector> barcodeDetector = nullptr;
  /// Whether a preview can show the frames. Without that, a screen cannot know which part of them its cut-out shows,
  /// and its photos are whole frames.
  bool hasPreview = true;
  /// Told why the frames ended by themselves, in words: the file's end, a camera that cannot be opened or has gone. On
  /// any thread; may be absent.
  std::function<void(const std::string& reason)> onEnd = nullptr;
};

/// One camera, or a video file that stands in for one. Stills are frames, which come at the largest size that the
/// camera has. Whether it may be used is for the permissions of the file to say: there is nobody to ask.
class OpenCvCaptureSystem final : public CaptureSystem {
 public:
  explicit OpenCvCaptureSystem(OpenCvCameraOptions options);

  CameraAuthorizationStatus authorizationStatus() const override;
  void requestAccess(std::function<void(bool granted)> completion) override;
  std::shared_ptr<CaptureDevice> backCamera() override;
  std::shared_ptr<CaptureSession> makeSession() override;

 private:
  OpenCvCameraOptions options_;
  std::shared_ptr<CaptureDevice> device_;
};

}  // namespace pravik
