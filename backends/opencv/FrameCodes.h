#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/BarcodeDetector.h"
#include "Platform/Bitmap.h"
#include "Platform/CaptureSession.h"
#include "Platform/Dispatch.h"

namespace pravik {

/// Looks for codes on the frames of a video and hands over what it finds. Used on the session's queue only.
class FrameCodes {
 public:
  FrameCodes(std::shared_ptr<const BarcodeDetector> detector, std::shared_ptr<SerialQueue> queue,
             CaptureSession::MetadataHandler handler);

  /// Looks for these types from now on; for none, nothing is looked for.
  void setTypes(const std::vector<MetadataObjectType>& types);
  /// Looks at a frame when it is due; `handler` is called on the queue when there are codes.
  void process(const Bitmap& frame);

 private:
  std::shared_ptr<const BarcodeDetector> detector_;
  std::shared_ptr<SerialQueue> queue_;
  CaptureSession::MetadataHandler handler_;
  std::vector<BarcodeSymbology> symbologies_;
  std::int64_t frameCount_ = 0;
};

}  // namespace pravik
