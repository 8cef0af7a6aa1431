#pragma once

namespace pravik {

/// A point. Whether it counts pixels or is normalised, and where the origin lies, is said where it is used.
struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

/// An axis-aligned rectangle: the corner with the smallest coordinates, and the extent.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double midX() const { return x + width / 2; }
  double midY() const { return y + height / 2; }
  double area() const { return width * height; }
  bool operator==(const Rect&) const = default;
};

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
