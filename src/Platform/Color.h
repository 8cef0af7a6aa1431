#pragma once

namespace pravik {

/// A colour in sRGB; all components from 0 to 1, alpha not multiplied in.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  constexpr Color withAlpha(double value) const { return {red, green, blue, value}; }
  bool operator==(const Color&) const = default;
};

namespace colors {

inline constexpr Color clear{0, 0, 0, 0};
inline constexpr Color black{0, 0, 0, 1};
inline constexpr Color white{1, 1, 1, 1};

}  // namespace colors

}  // namespace pravik
