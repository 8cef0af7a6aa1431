#pragma once

#include "Platform/Geometry.h"

namespace pravik {

/// A camera's controls. May be called from any thread. Setters are called between a lock and its unlock only, and
/// only for what the device says it supports.
class CaptureDevice {
 public:
  virtual ~CaptureDevice() = default;

  /// Throws std::exception with a text that a user can read when another program holds the device.
  virtual void lockForConfiguration() = 0;
  virtual void unlockForConfiguration() = 0;

  virtual bool supportsContinuousAutoFocus() const = 0;
  virtual void setContinuousAutoFocus() = 0;

  virtual bool supportsContinuousAutoExposure() const = 0;
  virtual void setContinuousAutoExposure() = 0;

  virtual bool supportsExposurePointOfInterest() const = 0;
  /// Where the light is measured: 0...1 in both directions of the unturned picture, origin at the top left.
  virtual void setExposurePointOfInterest(Point point) = 0;

  virtual bool hasTorch() const = 0;
  virtual bool isTorchOn() const = 0;
  virtual void setTorch(bool on) = 0;
};

}  // namespace pravik
