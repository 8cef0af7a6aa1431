#pragma once

#include <span>
#include <string>
#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "Platform/WorkLimit.h"

namespace pravik {

/// The identifier of a code type on still pictures, such as "VNBarcodeSymbologyQR".
struct BarcodeSymbology {
  std::string rawValue;
  bool operator==(const BarcodeSymbology&) const = default;
};

/// One code on a picture.
struct BarcodeObservation {
  /// The decoded content as UTF-8.
  std::string payload;
  BarcodeSymbology symbology;
  /// Normalised to 0...1 in both directions, origin at the lower left of the picture.
  Rect boundingBox;
};

/// Reads QR and bar codes. A call blocks; calls from several threads may overlap.
class BarcodeDetector {
 public:
  virtual ~BarcodeDetector() = default;

  /// The codes of the given types; a type that the detector does not know is passed over. None is an empty list.
  /// When the limit is spent, what was found so far is the answer. Throws std::exception with a text that a user can
  /// read when it cannot work.
  virtual std::vector<BarcodeObservation> detect(const Bitmap& bitmap, std::span<const BarcodeSymbology> symbologies,
                                                 const WorkLimit& limit) const = 0;
};

}  // namespace pravik
