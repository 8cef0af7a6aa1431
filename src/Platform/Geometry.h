#pragma once

#include <algorithm>
#include <cmath>

namespace pravik {

/// A point. Whether it counts pixels or is normalised, and where the origin lies, is said where it is used.
struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

/// A width and a height.
struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

/// An axis-aligned rectangle: the corner with the smallest coordinates, and the extent.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double midX() const { return x + width / 2; }
  double midY() const { return y + height / 2; }
  double maxX() const { return x + width; }
  double maxY() const { return y + height; }
  double area() const { return width * height; }
  /// The edges at the smaller coordinates belong to the rectangle, the others do not.
  bool contains(const Point& point) const {
    return point.x >= x && point.x < maxX() && point.y >= y && point.y < maxY();
  }
  bool operator==(const Rect&) const = default;
};

/// The part that two rectangles share; of no extent where they do not overlap.
inline Rect intersection(const Rect& a, const Rect& b) {
  const double x = std::max(a.x, b.x);
  const double y = std::max(a.y, b.y);
  return {x, y, std::max(0.0, std::min(a.maxX(), b.maxX()) - x), std::max(0.0, std::min(a.maxY(), b.maxY()) - y)};
}

/// A rectangle of whole pixels; origin at the top left of the picture.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool operator==(const PixelRect&) const = default;
};

/// Four corners, named as they look to a person who sees the picture upright.
struct Quadrilateral {
  Point topLeft;
  Point topRight;
  Point bottomLeft;
  Point bottomRight;

  bool operator==(const Quadrilateral&) const = default;
};

/// What is normalised, in pixels: coordinates from 0 to 1 become those of a picture of that size.
inline Point inPixels(const Point& point, const Size& picture) {
  return {point.x * picture.width, point.y * picture.height};
}
inline Rect inPixels(const Rect& rect, const Size& picture) {
  return {rect.x * picture.width, rect.y * picture.height, rect.width * picture.width, rect.height * picture.height};
}
inline Quadrilateral inPixels(const Quadrilateral& corners, const Size& picture) {
  return {inPixels(corners.topLeft, picture), inPixels(corners.topRight, picture),
          inPixels(corners.bottomLeft, picture), inPixels(corners.bottomRight, picture)};
}

/// What is normalised with the origin at the lower left, seen from the top left, and the other way round.
inline Point flipped(const Point& point) {
  return {point.x, 1 - point.y};
}
inline Rect flipped(const Rect& rect) {
  return {rect.x, 1 - rect.maxY(), rect.width, rect.height};
}
inline Quadrilateral flipped(const Quadrilateral& corners) {
  return {flipped(corners.topLeft), flipped(corners.topRight), flipped(corners.bottomLeft),
          flipped(corners.bottomRight)};
}

/// All pixels that a rectangle within a picture touches; both in pixels from the top left.
inline PixelRect touchedPixels(const Rect& rect, const Size& picture) {
  const int left = static_cast<int>(std::floor(rect.x));
  const int top = static_cast<int>(std::floor(rect.y));
  // The far edges are sums and may lie a rounding error outside.
  const int right = static_cast<int>(std::min(std::ceil(rect.maxX()), picture.width));
  const int bottom = static_cast<int>(std::min(std::ceil(rect.maxY()), picture.height));
  return {left, top, right - left, bottom - top};
}

}  // namespace pravik
