#include "Reading/PicturePart.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace pravik {

Bitmap paintedOver(const Bitmap& picture, const Quadrilateral& part) {
  const std::ptrdiff_t pixel = bytesPerPixel(picture.format());
  const std::ptrdiff_t stride = pixel * picture.width();
  const auto pixels = allocatePixels(picture.format(), picture.width(), picture.height());
  for (int y = 0; y < picture.height(); ++y)
    std::memcpy(pixels.get() + y * stride, picture.row(y), static_cast<std::size_t>(stride));

  const std::array corners{part.topLeft, part.topRight, part.bottomRight, part.bottomLeft};
  const auto column = [&](double x) { return static_cast<int>(std::clamp(std::round(x), 0.0, picture.size().width)); };
  const int row = static_cast<int>(std::clamp(part.topLeft.y, 0.0, picture.height() - 1.0));
  const std::uint8_t* const paint = picture.row(row) + pixel * std::min(column(part.topLeft.x), picture.width() - 1);
  for (int y = 0; y < picture.height(); ++y) {
    double left = std::numeric_limits<double>::infinity();
    double right = -left;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const Point& from = corners[i];
      const Point& to = corners[(i + 1) % corners.size()];
      if (std::min(from.y, to.y) > y + 0.5 || std::max(from.y, to.y) < y + 0.5 || from.y == to.y) continue;
      const double x = from.x + (to.x - from.x) * (y + 0.5 - from.y) / (to.y - from.y);
      left = std::min(left, x);
      right = std::max(right, x);
    }
    if (left > right) continue;
    for (int x = column(left); x < column(right); ++x)
      std::memcpy(pixels.get() + y * stride + x * pixel, paint, static_cast<std::size_t>(pixel));
  }
  return {picture.format(), picture.width(), picture.height(), stride, pixels};
}

}  // namespace pravik
