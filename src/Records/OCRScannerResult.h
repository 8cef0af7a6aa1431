#pragma once

#include <optional>

#include "Platform/Image.h"

namespace pravik {

/// What a scan brought: the record, and the photo it was read from when there is one.
template <class Info>
struct OCRScannerResult {
  Info info;
  std::optional<Image> capturedImage;
};

}  // namespace pravik
