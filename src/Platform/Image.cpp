#include "Platform/Image.h"

#include <cstring>

namespace pravik {
namespace {

/// The stored pixel that a pixel of the upright picture shows: x = x0 + dxx * column + dxy * row, and so for y.
struct SourceMap {
  int x0, dxx, dxy;
  int y0, dyx, dyy;
};

SourceMap sourceMap(ImageOrientation orientation, int lastX, int lastY) {
  switch (orientation) {
    case ImageOrientation::up:
      return {0, 1, 0, 0, 0, 1};
    case ImageOrientation::upMirrored:
      return {lastX, -1, 0, 0, 0, 1};
    case ImageOrientation::down:
      return {lastX, -1, 0, lastY, 0, -1};
    case ImageOrientation::downMirrored:
      return {0, 1, 0, lastY, 0, -1};
    case ImageOrientation::leftMirrored:
      return {0, 0, 1, 0, 1, 0};
    case ImageOrientation::right:
      return {0, 0, 1, lastY, -1, 0};
    case ImageOrientation::rightMirrored:
      return {lastX, 0, -1, lastY, -1, 0};
    case ImageOrientation::left:
      return {lastX, 0, -1, 0, 1, 0};
  }
  return {0, 1, 0, 0, 0, 1};
}

bool isQuarterTurn(ImageOrientation orientation) {
  return orientation >= ImageOrientation::leftMirrored;
}

}  // namespace

Size uprightSize(const Image& image) {
  if (!image.bitmap) return {};
  const Size size = image.bitmap->size();
  return isQuarterTurn(image.orientation) ? Size{size.height, size.width} : size;
}

Bitmap uprightBitmap(const Bitmap& bitmap, ImageOrientation orientation) {
  if (orientation == ImageOrientation::up) return bitmap;
  const bool quarterTurn = isQuarterTurn(orientation);
  const int width = quarterTurn ? bitmap.height() : bitmap.width();
  const int height = quarterTurn ? bitmap.width() : bitmap.height();
  const SourceMap map = sourceMap(orientation, bitmap.width() - 1, bitmap.height() - 1);
  const int pixelBytes = bytesPerPixel(bitmap.format());

  auto pixels = allocatePixels(bitmap.format(), width, height);
  std::uint8_t* target = pixels.get();
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column, target += pixelBytes) {
      const int x = map.x0 + map.dxx * column + map.dxy * row;
      const int y = map.y0 + map.dyx * column + map.dyy * row;
      std::memcpy(target, bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * pixelBytes,
                  static_cast<std::size_t>(pixelBytes));
    }
  }
  return {bitmap.format(), width, height, static_cast<std::ptrdiff_t>(width) * pixelBytes, pixels};
}

}  // namespace pravik
