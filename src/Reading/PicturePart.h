#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"

namespace pravik {

/// A colour, its channels from 0 to 255, or a sum of several.
struct Colour {
  int blue = 0;
  int green = 0;
  int red = 0;

  /// ITU-R BT.601.
  int luma() const { return (29 * blue + 150 * green + 77 * red) >> 8; }
};

/// The pixel that a place lies in, in pixels from the top left; beyond the picture its edge is repeated.
inline Colour colourAt(const Bitmap& picture, const Point& place) {
  const int x = static_cast<int>(std::clamp(place.x, 0.0, picture.width() - 1.0));
  const int y = static_cast<int>(std::clamp(place.y, 0.0, picture.height() - 1.0));
  const std::uint8_t* pixel = picture.row(y) + std::ptrdiff_t{x} * bytesPerPixel(picture.format());
  if (picture.format() == PixelFormat::grey8) return {*pixel, *pixel, *pixel};
  return {pixel[0], pixel[1], pixel[2]};
}

/// The rectangle around four corners.
inline Rect surrounding(const Quadrilateral& corners) {
  const auto [left, right] =
      std::minmax({corners.topLeft.x, corners.topRight.x, corners.bottomLeft.x, corners.bottomRight.x});
  const auto [top, bottom] =
      std::minmax({corners.topLeft.y, corners.topRight.y, corners.bottomLeft.y, corners.bottomRight.y});
  return {left, top, right - left, bottom - top};
}

/// A copy of a picture on which a part is even in the colour of its upper left corner; corners in pixels from the top
/// left.
Bitmap paintedOver(const Bitmap& picture, const Quadrilateral& part);

/// A part of a picture, such as a card.
struct PicturePart {
  /// In pixels from the top left.
  Quadrilateral corners;
  /// In millimetres.
  Size size;

  /// The place on the picture at shares of the width and height.
  Point at(double across, double down) const {
    const auto between = [](const Point& a, const Point& b, double share) {
      return Point{a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
    };
    return between(between(corners.topLeft, corners.topRight, across),
                   between(corners.bottomLeft, corners.bottomRight, across), down);
  }
};

}  // namespace pravik
