#pragma once

#include "Platform/Path.h"
#include "Platform/View.h"

namespace pravik {

/// A drawn outline. Filled by the even-odd rule, then stroked.
class ShapeLayer : public View {
 public:
  Path path;
  Color fillColor = colors::clear;
  Color strokeColor = colors::clear;
  /// In points, half on each side of the path.
  double lineWidth = 1;
};

}  // namespace pravik
