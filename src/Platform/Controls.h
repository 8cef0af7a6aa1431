#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Geometry.h"
#include "Platform/View.h"

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

/// A drawn outline. Filled by the even-odd rule, then stroked.
class ShapeLayer : public View {
 public:
  Path path;
  Color fillColor = colors::clear;
  Color strokeColor = colors::clear;
  /// In points, half on each side of the path.
  double lineWidth = 1;
};

/// One line of text, centred in the frame and cut off with an ellipsis where it does not fit.
class Label : public View {
 public:
  std::string text;
  Color textColor = colors::white;
  Font font;
};

/// Something to tap: an icon, a title, or the icon left of the title, centred in the frame.
class Button : public View {
 public:
  /// The name of a symbol, such as "camera.fill"; empty for none. A stage without that symbol draws the title alone.
  std::string icon;
  /// Empty for none.
  std::string title;
  /// Of icon and title.
  Color tintColor = colors::white;
  Font font;
  std::function<void()> onTap;

 protected:
  bool takesTouches() const override { return true; }
  void touched(Point /*point*/) override {
    // A superview may choose the button though it cannot be seen; nobody meant to tap it then.
    if (!isHidden && onTap) onTap();
  }
};

/// A row of segments of equal width, one of which is selected. The background is that of the view.
class SegmentedControl : public View {
 public:
  struct Segment {
    std::string title;
    /// A segment that is not enabled is drawn faint and takes no touches.
    bool isEnabled = true;
  };

  std::vector<Segment> segments;
  std::size_t selectedSegment = 0;
  Color titleColor = colors::white;
  Color selectedTitleColor = colors::black;
  /// Fills the selected segment.
  Color selectedTintColor = colors::white;
  Font font;
  /// Told after a touch has selected another segment.
  std::function<void(std::size_t segment)> onChange;

 protected:
  bool takesTouches() const override { return true; }
  void touched(Point point) override;
};

}  // namespace pravik
