#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Bitmap.h"

namespace pravik {

/// How the stored pixels must be turned to stand upright; the names tell where the stored top edge points.
/// The eight cases in the order of the Exif orientation tag: 1 up, 2 upMirrored, 3 down, 4 downMirrored,
/// 5 leftMirrored, 6 right, 7 rightMirrored, 8 left (Exif 2.32, tag 0x0112).
enum class ImageOrientation : std::uint8_t {
  up = 1,
  upMirrored,
  down,
  downMirrored,
  leftMirrored,
  right,
  rightMirrored,
  left
};

/// A photo as a caller hands it in: pixels, how to turn them, and pixels per point of the caller's display.
/// Without pixels it is an image that cannot be recognised.
struct Image {
  std::optional<Bitmap> bitmap;
  ImageOrientation orientation = ImageOrientation::up;
  double scale = 1;
};

/// The size of the upright picture in pixels; nothing without pixels.
Size uprightSize(const Image& image);
/// The pixels turned upright: the bitmap itself when it stands upright already, else a turned copy.
Bitmap uprightBitmap(const Bitmap& bitmap, ImageOrientation orientation);

}  // namespace pravik
