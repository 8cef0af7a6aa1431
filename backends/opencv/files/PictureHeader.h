#pragma once

#include <cstdint>
#include <span>

#include "Platform/Image.h"

namespace pravik {

/// The file formats that can be read.
enum class PictureFormat : std::uint8_t { jpeg, png, bmp, webp, tiff };

/// What the start of a picture file says about the pixels.
struct PictureHeader {
  PictureFormat format{};
  /// Size of the stored pixels, before they are turned upright; at least 1 x 1.
  std::int64_t width = 0;
  std::int64_t height = 0;
  /// From the Exif data or the TIFF directory; up when there is none.
  ImageOrientation orientation = ImageOrientation::up;
};

/// Reads the size and the orientation without decoding a pixel. Throws std::runtime_error with a readable text when the
/// bytes are not one of the formats, are damaged, end before the picture does, or promise more pixels than
/// `maximumPicturePixels`.
PictureHeader readPictureHeader(std::span<const std::uint8_t> file);

}  // namespace pravik
