#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Alert.h"
#include "Platform/Animation.h"
#include "Platform/Dispatch.h"
#include "Platform/Font.h"
#include "Platform/Geometry.h"
#include "Platform/Image.h"
#include "Platform/Screen.h"

namespace pravik {

/// Where screens are shown. Called on the main queue only; every completion comes there too, and none before the call
/// that it belongs to has returned.
class Stage {
 public:
  virtual ~Stage() = default;

  /// Shows a screen over what is there and keeps it alive until it was dismissed. The completion may be absent.
  virtual void present(std::shared_ptr<Screen> screen, bool animated, std::function<void()> completion) = 0;
  /// Takes a screen away, then calls the completion, which may be absent, and only then lets go of the screen. A screen
  /// that is not shown has been taken away already.
  virtual void dismiss(Screen& screen, bool animated, std::function<void()> completion) = 0;
  /// Hides or shows the host's own navigation bar, if it has one.
  virtual void setNavigationBarHidden(bool hidden) = 0;

  /// Shows an alert over the screen; also called while the screen loads.
  virtual void presentAlert(Alert alert) = 0;
  /// Opens the page of the system's settings where the user decides what this program may use.
  virtual void openSettings() = 0;
  /// Lets the user pick one picture, closes the picker, and hands over the picture: nothing when the user cancelled or
  /// what was picked is no picture. Called exactly once, on any thread.
  virtual void pickPhoto(std::function<void(std::optional<Image>)> completion) = 0;

  /// Starts an animation. Calling the work item off ends it where its views' values are, without the completion.
  virtual WorkItem animate(Animation animation) = 0;
  /// Whether its windows may be much wider than high, where the scanner's usual layout, made for a screen held upright,
  /// has no room.
  virtual bool hasWideWindows() const { return false; }
  /// The extent of one line of text, in points.
  virtual Size textSize(const std::string& text, const Font& font) const = 0;
};

}  // namespace pravik
