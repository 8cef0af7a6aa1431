#include "UI/PhotoCrop.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace pravik {
namespace {

constexpr double margin = 0.05;
constexpr double leastWidth = 100;
constexpr double leastHeight = 50;

bool isLarger(const Rect& rect, double width, double height) {
  return rect.width > width && rect.height > height;
}

Rect grown(const Rect& rect) {
  const double dx = rect.width * margin;
  const double dy = rect.height * margin;
  return {rect.x - dx, rect.y - dy, rect.width + 2 * dx, rect.height + 2 * dy};
}

/// All pixels of a bitmap that a rectangle touches.
PixelRect touchedPixels(const Rect& rect, const Bitmap& bitmap) {
  const auto left = static_cast<int>(std::floor(rect.x));
  const auto top = static_cast<int>(std::floor(rect.y));
  // The far edges are sums and may lie a rounding error outside.
  const int right = std::min(static_cast<int>(std::ceil(rect.maxX())), bitmap.width());
  const int bottom = std::min(static_cast<int>(std::ceil(rect.maxY())), bitmap.height());
  return {left, top, right - left, bottom - top};
}

}  // namespace

std::optional<Image> cropImageToCutout(const Image& image, const std::optional<Rect>& cutout) {
  if (!cutout || !isLarger(*cutout, 0, 0) || !image.bitmap) return std::nullopt;
  const double width = image.bitmap->width();
  const double height = image.bitmap->height();
  const Rect scaled{cutout->x * width, cutout->y * height, cutout->width * width, cutout->height * height};
  const Rect part = intersection(grown(scaled), {0, 0, width, height});
  if (!isLarger(part, leastWidth, leastHeight)) return std::nullopt;
  return Image{image.bitmap->crop(touchedPixels(part, *image.bitmap)), image.orientation, image.scale};
}

std::string sizeDescription(const Image& image) {
  double width = image.bitmap ? image.bitmap->width() / image.scale : 0;
  double height = image.bitmap ? image.bitmap->height() / image.scale : 0;
  if (image.orientation >= ImageOrientation::leftMirrored) std::swap(width, height);
  return fmt::format("({:.1f}, {:.1f})", width, height);
}

}  // namespace pravik
