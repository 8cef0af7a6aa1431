#pragma once

#include <optional>

#include "Platform/CaptureDevice.h"
#include "backends/opencv/camera/VideoSource.h"

namespace pravik {

/// The controls of a camera through Video4Linux, as far as its driver offers them: focus, exposure, and the light of a
/// flash as torch. Drivers cannot be told where to measure the light. A video file has no controls.
class OpenCvCaptureDevice final : public CaptureDevice {
 public:
  explicit OpenCvCaptureDevice(const VideoSource& source);

  void lockForConfiguration() override;
  void unlockForConfiguration() override {}
  bool supportsContinuousAutoFocus() const override;
  void setContinuousAutoFocus() override;
  bool supportsContinuousAutoExposure() const override;
  void setContinuousAutoExposure() override;
  bool supportsExposurePointOfInterest() const override { return false; }
  void setExposurePointOfInterest(Point /*point*/) override {}
  bool hasTorch() const override;
  bool isTorchOn() const override;
  void setTorch(bool on) override;

 private:
  bool offers(unsigned control) const;
  bool set(unsigned control, int value) const;

  /// Absent for a video file.
  std::optional<std::filesystem::path> camera_;
};

}  // namespace pravik
