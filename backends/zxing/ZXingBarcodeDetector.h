#pragma once

#include <memory>
#include <string>

#include "Platform/BarcodeDetector.h"
#include "Platform/ImageRenderer.h"
#include "Platform/RectangleDetector.h"

namespace pravik {

/// Reads codes with ZXing-C++. At most one code of each type is found on a picture; the more a type's own checks
/// say about a reading, the earlier it stands in the list. A picture on which nothing is found at first gets a
/// second look: at turned, enlarged and smoothed cuts of the places that look like codes, at the label it stands on
/// straightened, and at the whole picture turned by a few angles.
class ZXingBarcodeDetector final : public BarcodeDetector {
 public:
  /// The rectangle detector and the renderer straighten a label that is seen at an angle; without either that
  /// look is left out.
  explicit ZXingBarcodeDetector(std::shared_ptr<const RectangleDetector> rectangleDetector = nullptr,
                                std::shared_ptr<const ImageRenderer> renderer = nullptr);

  /// Throws std::runtime_error when OpenCV fails, and std::bad_alloc.
  std::vector<BarcodeObservation> detect(const Bitmap& bitmap, std::span<const BarcodeSymbology> symbologies,
                                         const WorkLimit& limit) const override;

  /// The version of ZXing-C++ that this was built with, such as "1.4.0".
  static std::string libraryVersion();

 private:
  std::shared_ptr<const RectangleDetector> rectangleDetector_;
  std::shared_ptr<const ImageRenderer> renderer_;
};

}  // namespace pravik
