#pragma once

#include <memory>

#include "Platform/BarcodeDetector.h"
#include "Platform/CaptureSystem.h"
#include "Platform/Dispatch.h"
#include "Platform/ImageCodec.h"
#include "Platform/ImageRenderer.h"
#include "Platform/PhotoLibrary.h"
#include "Platform/RectangleDetector.h"
#include "Platform/Stage.h"
#include "Platform/TextEngine.h"

namespace pravik {

/// One of each port. A port that is absent gives the error that the caller of an operation would expect.
struct Platform {
  std::shared_ptr<ImageCodec> imageCodec;
  std::shared_ptr<ImageRenderer> imageRenderer;
  std::shared_ptr<TextEngine> textEngine;
  std::shared_ptr<RectangleDetector> rectangleDetector;
  std::shared_ptr<BarcodeDetector> barcodeDetector;
  std::shared_ptr<Dispatch> dispatch;
  std::shared_ptr<PhotoLibrary> photoLibrary;
  std::shared_ptr<CaptureSystem> captureSystem;
  /// Where the screens are shown that the host presents itself.
  std::shared_ptr<Stage> stage;

  /// The platform that PravikSDK::shared() is created from. An application sets it once at start-up, before
  /// the first use of the shared instance.
  static Platform& current();
};

}  // namespace pravik
