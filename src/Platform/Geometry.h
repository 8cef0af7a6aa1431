#pragma once

#include <algorithm>

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

}  // namespace pravik
