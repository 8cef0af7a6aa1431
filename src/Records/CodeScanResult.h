#pragma once

#include <string>

#include "Platform/BarcodeDetector.h"
#include "Platform/MetadataObjectType.h"

namespace pravik {

/// What a QR or bar code says.
struct CodeScanResult {
  /// The decoded content as UTF-8.
  std::string payload;
  /// The display name of the code's type, such as "QR Code".
  std::string symbology;
};

/// The display name of a code type, such as "QR Code"; the identifier itself for a type that has none.
std::string pravikDisplayName(const BarcodeSymbology& symbology);
std::string pravikDisplayName(const MetadataObjectType& type);

}  // namespace pravik
