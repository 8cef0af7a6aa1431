#pragma once

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"

namespace pravik {

/// A straight strip of a picture, such as a row of digits; in pixels from the top left.
struct Strip {
  Point middle;
  /// Along the row and across it.
  double length = 0;
  double height = 0;
  /// How far the row falls to the right for every pixel along it.
  double slope = 0;

  bool operator==(const Strip&) const = default;
};

/// The strip cut out and laid level: `height` pixels high, as long as its shape asks for times `stretch`, in the format
/// of the picture. What lies outside of the picture repeats its edge. Pixels are averaged where the strip is reduced
/// (box filter), else interpolated (bilinear). `strip` must have an extent, and `height` and `stretch` be above 0.
Bitmap cutStrip(const Bitmap& picture, const Strip& strip, int height, double stretch = 1);

}  // namespace pravik
