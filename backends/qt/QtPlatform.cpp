#include "backends/qt/QtPlatform.h"

#include "backends/opencv/camera/OpenCvCaptureSystem.h"
#include "backends/qt/QtDispatch.h"

namespace pravik {

Platform makeQtPlatform(const QtPlatformOptions& options) {
  Platform platform = makeDefaultPlatform(options.parts);
  platform.dispatch = std::make_shared<QtDispatch>();
  useCamera(platform, options);
  return platform;
}

void useCamera(Platform& platform, const QtPlatformOptions& options) {
  OpenCvCameraOptions camera{
      .source = videoSourceNamed(options.camera), .loops = options.loops, .barcodeDetector = platform.barcodeDetector};
  if (options.onCameraEnd)
    camera.onEnd = [weak = std::weak_ptr(platform.dispatch), tell = options.onCameraEnd](const std::string& reason) {
      if (const auto dispatch = weak.lock()) dispatch->async([tell, reason] { tell(reason); });
    };
  platform.captureSystem = std::make_shared<OpenCvCaptureSystem>(std::move(camera));
}

}  // namespace pravik
