#pragma once

#include <memory>
#include <vector>

#include "Platform/Geometry.h"

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

/// The platform's own typeface for interfaces.
struct Font {
  /// In points.
  double size = 17;
  bool isBold = false;

  bool operator==(const Font&) const = default;
};

/// A rectangle on the screen, and the base of all that is drawn. The tree of views is a model: a stage draws it anew
/// with every refresh while its screen is up, and nobody tells the stage of changes. Main thread only.
///
/// Order of drawing: background, border, the type's own content, then the subviews from the first to the last. A
/// hidden view is not drawn, nor are its subviews; alpha multiplies down the tree. Subviews are not clipped.
class View {
 public:
  View() = default;
  virtual ~View() = default;
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  /// In points of the superview; origin at the top left, y downwards.
  Rect frame;
  Color backgroundColor = colors::clear;
  /// From 0 to 1; the view and its subviews.
  double alpha = 1;
  bool isHidden = false;
  /// Rounds the corners of background and border, in points.
  double cornerRadius = 0;
  /// The border lies inside the frame; 0 means none.
  double borderWidth = 0;
  Color borderColor = colors::clear;
  /// The height at the top that the device covers, in points. A stage sets it on a screen's root view.
  double safeAreaTop = 0;

  /// The frame in the view's own points: at the origin.
  Rect bounds() const { return {0, 0, frame.width, frame.height}; }

  /// From the bottom to the top.
  const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
  /// On top of the others.
  void addSubview(std::shared_ptr<View> view) { subviews_.push_back(std::move(view)); }

  /// The view that a touch at a point (of this view) belongs to; null when it belongs to none. A view that is hidden
  /// or transparent takes no touch; a plain view passes all on to the subviews.
  virtual View* hitTest(Point point);
  /// Hands a touch at a point (of this view) to the view that it belongs to.
  void touch(Point point);

 protected:
  /// Whether the view takes the touches inside its bounds that no subview takes.
  virtual bool takesTouches() const { return false; }
  /// Called with a touch inside the view's bounds, in the view's own points.
  virtual void touched(Point /*point*/) {}

 private:
  /// Where a view's origin lies in this view; null when it is not inside.
  bool findOrigin(const View* view, Point& origin) const;

  std::vector<std::shared_ptr<View>> subviews_;
};

}  // namespace pravik
