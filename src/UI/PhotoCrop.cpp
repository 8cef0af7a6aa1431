#include "UI/PhotoCrop.h"

#include <utility>

#include "Utils/Format.h"

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

}  // namespace

std::optional<Image> cropImageToCutout(const Image& image, const std::optional<Rect>& cutout) {
  if (!cutout || !isLarger(*cutout, 0, 0) || !image.bitmap) return std::nullopt;
  const Size size = image.bitmap->size();
  const Rect part = intersection(grown(inPixels(*cutout, size)), {0, 0, size.width, size.height});
  if (!isLarger(part, leastWidth, leastHeight)) return std::nullopt;
  return Image{image.bitmap->crop(touchedPixels(part, size)), image.orientation, image.scale};
}

std::string sizeDescription(const Image& image) {
  double width = image.bitmap ? image.bitmap->width() / image.scale : 0;
  double height = image.bitmap ? image.bitmap->height() / image.scale : 0;
  if (image.orientation >= ImageOrientation::leftMirrored) std::swap(width, height);
  return formatted("({:.1f}, {:.1f})", width, height);
}

}  // namespace pravik
