#include "Platform/Bitmap.h"

#include <stdexcept>
#include <utility>

namespace pravik {

Bitmap::Bitmap(PixelFormat format, int width, int height, std::ptrdiff_t stride,
               std::shared_ptr<const std::uint8_t> pixels)
    : format_(format), width_(width), height_(height), stride_(stride), pixels_(std::move(pixels)) {
  if (width < 1 || height < 1) throw std::invalid_argument("a bitmap needs at least one pixel");
  if (stride < static_cast<std::ptrdiff_t>(width) * bytesPerPixel(format))
    throw std::invalid_argument("a bitmap's stride must hold a row");
  if (!pixels_) throw std::invalid_argument("a bitmap needs pixels");
}

Bitmap Bitmap::crop(const PixelRect& area) const {
  const bool inside = area.x >= 0 && area.y >= 0 && area.width >= 1 && area.height >= 1 &&
                      area.width <= width_ - area.x && area.height <= height_ - area.y;
  if (!inside) throw std::invalid_argument("a crop must lie within the bitmap");
  const std::ptrdiff_t offset = area.y * stride_ + static_cast<std::ptrdiff_t>(area.x) * bytesPerPixel(format_);
  return {format_, area.width, area.height, stride_,
          std::shared_ptr<const std::uint8_t>(pixels_, pixels_.get() + offset)};
}

std::shared_ptr<std::uint8_t> allocatePixels(PixelFormat format, int width, int height) {
  const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                           static_cast<std::size_t>(bytesPerPixel(format));
  std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[size]());
  const std::shared_ptr<std::uint8_t[]> array(std::move(bytes));
  return {array, array.get()};
}

}  // namespace pravik
