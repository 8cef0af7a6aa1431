#pragma once

#include <array>

#include "Platform/Geometry.h"

namespace pravik {

/// How the points of one plane lie on another as a camera sees it: a homography, row by row. The default moves nothing.
struct Projection {
  std::array<double, 9> matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};

  /// That which puts the corners of a picture of this size on four points (Heckbert, "Fundamentals of Texture Mapping
  /// and Image Warping", 1989, section 2.2.3). Both planes have their origin at the top left.
  static Projection onto(const Quadrilateral& corners, const Size& size);

  Point operator()(const Point& point) const;
  Quadrilateral operator()(const Quadrilateral& corners) const;
  /// First the other, then this.
  Projection operator*(const Projection& first) const;
};

/// The corners of a rectangle.
Quadrilateral cornersOf(const Rect& area);
/// Whether a point lies within four corners, or on an edge between them.
bool contains(const Quadrilateral& area, const Point& point);
/// The corners moved away from their middle by this share of their distance to it.
Quadrilateral grown(const Quadrilateral& area, double share);
/// The mean of the corners.
Point middleOf(const Quadrilateral& area);
/// The corners as they are named when the picture is turned clockwise by so many degrees, in steps of 90.
Quadrilateral renamed(Quadrilateral corners, int degrees);

}  // namespace pravik
