#pragma once

#include <optional>

#include "Platform/Bitmap.h"

namespace pravik {

/// One picture of a live camera, as its sensor holds it: not turned.
struct VideoFrame {
  /// BGRA pixels; absent when the frame could not be read.
  std::optional<Bitmap> pixels;
};

}  // namespace pravik
