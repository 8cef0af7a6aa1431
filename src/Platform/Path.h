#pragma once

#include <variant>
#include <vector>

#include "Platform/Geometry.h"

namespace pravik {

/// Begins a new line at a point.
struct MoveTo {
  Point point;
  bool operator==(const MoveTo&) const = default;
};

/// A straight line on to a point.
struct LineTo {
  Point point;
  bool operator==(const LineTo&) const = default;
};

/// A closed rectangle whose corners are arcs of a radius; a radius of 0 leaves them sharp.
struct RoundedRect {
  Rect rect;
  double radius = 0;
  bool operator==(const RoundedRect&) const = default;
};

using PathElement = std::variant<MoveTo, LineTo, RoundedRect>;
/// An outline, piece after piece; in the points of the view that draws it.
using Path = std::vector<PathElement>;

}  // namespace pravik
