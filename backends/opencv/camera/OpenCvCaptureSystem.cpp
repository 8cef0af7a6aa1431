#include "backends/opencv/camera/OpenCvCaptureSystem.h"

#include <system_error>
#include <utility>

#include "backends/opencv/camera/OpenCvCaptureDevice.h"
#include "backends/opencv/camera/OpenCvCaptureSession.h"

namespace pravik {

OpenCvCaptureSystem::OpenCvCaptureSystem(OpenCvCameraOptions options)
    : options_(std::move(options)), device_(std::make_shared<OpenCvCaptureDevice>(options_.source)) {}

CameraAuthorizationStatus OpenCvCaptureSystem::authorizationStatus() const {
  std::error_code error;
  const bool isThere = std::filesystem::exists(options_.source.path, error);
  return isThere && !mayBeOpened(options_.source) ? CameraAuthorizationStatus::denied
                                                  : CameraAuthorizationStatus::authorized;
}

void OpenCvCaptureSystem::requestAccess(std::function<void(bool granted)> completion) {
  completion(authorizationStatus() == CameraAuthorizationStatus::authorized);
}

std::shared_ptr<CaptureDevice> OpenCvCaptureSystem::backCamera() {
  std::error_code error;
  return std::filesystem::exists(options_.source.path, error) ? device_ : nullptr;
}

std::shared_ptr<CaptureSession> OpenCvCaptureSystem::makeSession() {
  return std::make_shared<OpenCvCaptureSession>(options_);
}

}  // namespace pravik
