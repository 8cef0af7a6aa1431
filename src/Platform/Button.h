#pragma once

#include <functional>
#include <string>

#include "Platform/Font.h"
#include "Platform/View.h"

namespace pravik {

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

}  // namespace pravik
