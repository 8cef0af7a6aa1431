#pragma once

#include <functional>
#include <string>

#include "Platform/Platform.h"
#include "backends/DefaultPlatform.h"

namespace pravik {

/// How the platform of a Qt program is set up.
struct QtPlatformOptions {
  DefaultPlatformOptions parts = {};
  /// The number of a camera, its device file, or the path of a video file.
  std::string camera = "0";
  /// Whether a video file begins anew when it has ended.
  bool loops = false;
  /// Told on the main queue, in words, why the camera's pictures ended by themselves; may be absent.
  std::function<void(const std::string& reason)> onCameraEnd = nullptr;
};

/// The default platform with Qt's event loop as its main queue and with a camera. To be made on the thread of the
/// loop. Has no stage: that is a QtStage on a window.
Platform makeQtPlatform(const QtPlatformOptions& options = {});

/// Puts another camera into a platform; `options.parts` is not looked at.
void useCamera(Platform& platform, const QtPlatformOptions& options);

}  // namespace pravik
