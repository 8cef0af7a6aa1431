#pragma once

namespace pravik {

/// The platform's own typeface for interfaces.
struct Font {
  /// In points.
  double size = 17;
  bool isBold = false;

  bool operator==(const Font&) const = default;
};

}  // namespace pravik
