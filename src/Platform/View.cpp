#include "Platform/View.h"

#include <ranges>

namespace pravik {
namespace {

/// A view fainter than this takes no touches.
constexpr double leastTouchableAlpha = 0.01;

}  // namespace

View* View::hitTest(Point point) {
  if (isHidden || alpha < leastTouchableAlpha || !bounds().contains(point)) return nullptr;
  for (const std::shared_ptr<View>& view : std::views::reverse(subviews_)) {
    if (View* hit = view->hitTest({point.x - view->frame.x, point.y - view->frame.y})) return hit;
  }
  return takesTouches() ? this : nullptr;
}

void View::touch(Point point) {
  View* hit = hitTest(point);
  Point origin;
  if (hit == nullptr || !findOrigin(hit, origin)) return;
  hit->touched({point.x - origin.x, point.y - origin.y});
}

bool View::findOrigin(const View* view, Point& origin) const {
  if (view == this) return true;
  for (const std::shared_ptr<View>& child : subviews_) {
    if (!child->findOrigin(view, origin)) continue;
    origin = {origin.x + child->frame.x, origin.y + child->frame.y};
    return true;
  }
  return false;
}

}  // namespace pravik
