#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "Platform/Image.h"

namespace pravik {

/// What the first directory of TIFF data (TIFF 6.0, section 2) says; Exif data has the same form.
struct TiffDirectory {
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  ImageOrientation orientation = ImageOrientation::up;
};

/// Throws std::runtime_error when the data end before the directory or before the pixels it tells of.
TiffDirectory readTiffDirectory(std::span<const std::uint8_t> tiff);

}  // namespace pravik
