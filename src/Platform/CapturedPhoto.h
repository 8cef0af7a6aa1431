#pragma once

#include <optional>
#include <string>

#include "Platform/Image.h"

namespace pravik {

/// What became of a still photo.
struct CapturedPhoto {
  /// Absent when the photo failed or its data is no picture.
  std::optional<Image> image;
  /// Why the camera failed, in words a user can read; absent when it took the photo.
  std::optional<std::string> error;
};

}  // namespace pravik
