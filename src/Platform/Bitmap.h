#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Platform/Geometry.h"

namespace pravik {

/// How the bytes of a pixel lie in memory: blue, green, red, alpha (alpha is ignored), or one grey byte.
enum class PixelFormat : std::uint8_t { bgra8, grey8 };

/// Bytes of one pixel.
constexpr int bytesPerPixel(PixelFormat format) {
  return format == PixelFormat::bgra8 ? 4 : 1;
}

/// An immutable picture in memory, at least 1 x 1 pixels, rows from the top. Copies and crops share the pixels.
class Bitmap {
 public:
  /// Takes over pixels that already lie in memory: `stride` bytes from one row to the next.
  /// Throws std::invalid_argument when a side is below 1 or the stride does not hold a row.
  Bitmap(PixelFormat format, int width, int height, std::ptrdiff_t stride, std::shared_ptr<const std::uint8_t> pixels);

  PixelFormat format() const { return format_; }
  int width() const { return width_; }
  int height() const { return height_; }
  /// Width and height in pixels.
  Size size() const { return {static_cast<double>(width_), static_cast<double>(height_)}; }
  /// Bytes from the start of one row to the start of the next.
  std::ptrdiff_t stride() const { return stride_; }
  /// The first byte of a row; rows count from the top.
  const std::uint8_t* row(int y) const { return pixels_.get() + y * stride_; }

  /// The part inside `area` (pixels from the top left), which must lie within the picture and not be empty;
  /// throws std::invalid_argument otherwise. Shares the pixels.
  Bitmap crop(const PixelRect& area) const;

 private:
  PixelFormat format_;
  int width_;
  int height_;
  std::ptrdiff_t stride_;
  std::shared_ptr<const std::uint8_t> pixels_;
};

/// Fresh pixels to be filled and then handed to a Bitmap: zeroed, rows without padding.
/// Throws std::bad_alloc when there is no memory.
std::shared_ptr<std::uint8_t> allocatePixels(PixelFormat format, int width, int height);

}  // namespace pravik
