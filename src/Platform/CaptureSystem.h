#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/CaptureDevice.h"
#include "Platform/CaptureSession.h"

namespace pravik {

/// Whether the program may use the camera: the user was not asked yet, may not decide, said no, or said yes.
enum class CameraAuthorizationStatus : std::uint8_t { notDetermined, restricted, denied, authorized };

/// The cameras of the machine and the permission to use them. May be called from any thread.
class CaptureSystem {
 public:
  virtual ~CaptureSystem() = default;

  virtual CameraAuthorizationStatus authorizationStatus() const = 0;
  /// Asks the user; the answer comes exactly once, on any thread.
  virtual void requestAccess(std::function<void(bool granted)> completion) = 0;

  /// The wide-angle camera at the back, the same object every time; null when there is none.
  virtual std::shared_ptr<CaptureDevice> backCamera() = 0;
  /// A session without inputs and outputs; never null.
  virtual std::shared_ptr<CaptureSession> makeSession() = 0;
};

}  // namespace pravik
