#include "Platform/Projection.h"

#include <cmath>
#include <cstddef>

namespace pravik {
namespace {

double cross(const Point& origin, const Point& a, const Point& b) {
  return (a.x - origin.x) * (b.y - origin.y) - (a.y - origin.y) * (b.x - origin.x);
}

}  // namespace

Projection Projection::onto(const Quadrilateral& corners, const Size& size) {
  const auto& [topLeft, topRight, bottomLeft, bottomRight] = corners;
  const double sumX = topLeft.x - topRight.x + bottomRight.x - bottomLeft.x;
  const double sumY = topLeft.y - topRight.y + bottomRight.y - bottomLeft.y;
  const double rightX = topRight.x - bottomRight.x, rightY = topRight.y - bottomRight.y;
  const double lowerX = bottomLeft.x - bottomRight.x, lowerY = bottomLeft.y - bottomRight.y;
  const double determinant = rightX * lowerY - lowerX * rightY;
  // Four points of which three lie on a line have no such projection; they are stretched without a vanishing point.
  const double g = determinant == 0 ? 0 : (sumX * lowerY - lowerX * sumY) / determinant;
  const double h = determinant == 0 ? 0 : (rightX * sumY - sumX * rightY) / determinant;
  return {{(topRight.x - topLeft.x + g * topRight.x) / size.width,
           (bottomLeft.x - topLeft.x + h * bottomLeft.x) / size.height, topLeft.x,
           (topRight.y - topLeft.y + g * topRight.y) / size.width,
           (bottomLeft.y - topLeft.y + h * bottomLeft.y) / size.height, topLeft.y, g / size.width, h / size.height, 1}};
}

Point Projection::operator()(const Point& point) const {
  const auto row = [&](std::size_t i) {
    return matrix.at(3 * i) * point.x + matrix.at(3 * i + 1) * point.y + matrix.at(3 * i + 2);
  };
  return {row(0) / row(2), row(1) / row(2)};
}

Quadrilateral Projection::operator()(const Quadrilateral& corners) const {
  return {(*this)(corners.topLeft), (*this)(corners.topRight), (*this)(corners.bottomLeft),
          (*this)(corners.bottomRight)};
}

Projection Projection::operator*(const Projection& first) const {
  Projection product{{}};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j)
      for (std::size_t k = 0; k < 3; ++k)
        product.matrix.at(3 * i + j) += matrix.at(3 * i + k) * first.matrix.at(3 * k + j);
  return product;
}

Quadrilateral cornersOf(const Rect& area) {
  return {{area.x, area.y}, {area.maxX(), area.y}, {area.x, area.maxY()}, {area.maxX(), area.maxY()}};
}

bool contains(const Quadrilateral& area, const Point& point) {
  const std::array<Point, 4> corners{area.topLeft, area.topRight, area.bottomRight, area.bottomLeft};
  bool anyLeft = false, anyRight = false;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const double side = cross(corners.at(i), corners.at((i + 1) % 4), point);
    anyLeft = anyLeft || side < 0;
    anyRight = anyRight || side > 0;
  }
  return !(anyLeft && anyRight);
}

Point middleOf(const Quadrilateral& area) {
  return {(area.topLeft.x + area.topRight.x + area.bottomLeft.x + area.bottomRight.x) / 4,
          (area.topLeft.y + area.topRight.y + area.bottomLeft.y + area.bottomRight.y) / 4};
}

Quadrilateral grown(const Quadrilateral& area, double share) {
  const Point middle = middleOf(area);
  const auto moved = [&](const Point& corner) {
    return Point{corner.x + share * (corner.x - middle.x), corner.y + share * (corner.y - middle.y)};
  };
  return {moved(area.topLeft), moved(area.topRight), moved(area.bottomLeft), moved(area.bottomRight)};
}

Quadrilateral renamed(Quadrilateral corners, int degrees) {
  for (int quarter = static_cast<int>(std::lround(degrees / 90.0)) % 4; quarter > 0; --quarter)
    corners = {corners.bottomLeft, corners.topLeft, corners.bottomRight, corners.topRight};
  return corners;
}

}  // namespace pravik
