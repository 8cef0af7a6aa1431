#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Image.h"

namespace pravik {

/// The file formats that can be read.
enum class PictureFormat : std::uint8_t { jpeg, png, bmp, webp, heic, tiff, pdf };

/// What the start of a picture file says about the pixels.
struct PictureHeader {
  /// Size of the stored pixels, before they are turned upright; at least 1 x 1.
  std::int64_t width = 0;
  std::int64_t height = 0;
  /// From the Exif data or the TIFF directory; up when there is none.
  ImageOrientation orientation = ImageOrientation::up;
};

// All throw std::runtime_error with a readable text when the file is damaged or ends before the picture does.

/// The format that the first bytes tell, whatever the file is called. Throws when it is none that can be read.
PictureFormat formatOf(std::span<const std::uint8_t> file);

/// Throws std::runtime_error for more pixels than `maximumPicturePixels`, and for none.
void requirePictureSize(std::int64_t width, std::int64_t height);

/// Reads the size, which is an allowed one, and the orientation without decoding a pixel: of JPEG, PNG, BMP, WebP, and
/// the first page of TIFF.
PictureHeader readPictureHeader(std::span<const std::uint8_t> file, PictureFormat format);

/// Where the directory of each page of a TIFF file begins, at least one; thumbnails and masks are no pages. What is
/// wrong with a directory is told when its header is read.
std::vector<std::size_t> tiffDirectories(std::span<const std::uint8_t> file);
PictureHeader readTiffHeader(std::span<const std::uint8_t> file, std::size_t directory);

}  // namespace pravik
