#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch.h"
#include "Platform/Geometry.h"
#include "Platform/Image.h"
#include "Platform/View.h"

namespace pravik {

/// A question with a choice of answers. It closes by itself before the chosen answer's handler is called.
struct Alert {
  enum class ActionStyle : std::uint8_t { normal, cancel };

  struct Action {
    std::string title;
    ActionStyle style = ActionStyle::normal;
    std::function<void()> handler;
  };

  std::string title;
  std::string message;
  std::vector<Action> actions;
};

/// A change of views that is shown little by little, slow at the beginning and at the end.
struct Animation {
  std::chrono::milliseconds duration{0};
  /// Sets frames, alphas and colours to where they go; called once, before the call that starts the animation
  /// returns. The views then hold the final values, and only what is drawn lags behind.
  std::function<void()> changes = nullptr;
  /// Called once on the main queue when the duration is over; may be absent.
  std::function<void()> completion = nullptr;
  /// When set, the old look of this view fades into its new look, text included.
  std::shared_ptr<View> crossDissolvedView = nullptr;
};

/// A full-screen page that a stage shows, without a status bar. A stage calls it on the main queue in the order of the
/// members: load once, layout after the load and whenever the root view's size or safe area has changed, appear and
/// disappear as often as it comes and goes.
class Screen {
 public:
  virtual ~Screen() = default;

  /// The root view. The stage sets its frame (at the origin) and safe area before the load and draws its tree.
  virtual View& view() = 0;

  virtual void viewDidLoad() = 0;
  virtual void viewDidLayoutSubviews() = 0;
  virtual void viewWillAppear() = 0;
  virtual void viewWillDisappear() = 0;
};

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
