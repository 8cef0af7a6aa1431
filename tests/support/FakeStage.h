#pragma once

#include <vector>

#include "Platform/ManualDispatch.h"
#include "Platform/Stage.h"

namespace pravik::test {

/// A stage without a window, the size of a phone: screens come at once and take a while to go, alerts and pickers wait
/// for the test's answer, and animations end on the clock that the test moves.
class FakeStage : public Stage {
 public:
  static constexpr std::chrono::milliseconds dismissal{300};

  explicit FakeStage(std::shared_ptr<ManualDispatch> dispatch) : dispatch_(std::move(dispatch)) {}

  std::vector<std::shared_ptr<Screen>> screens;
  std::vector<Alert> alerts;
  std::vector<std::function<void(std::optional<Image>)>> pickers;
  bool navigationBarHidden = false;
  int settingsOpened = 0;
  std::vector<std::chrono::milliseconds> animations;
  std::vector<std::chrono::milliseconds> crossDissolves;

  void present(std::shared_ptr<Screen> screen, bool /*animated*/, std::function<void()> completion) override {
    screens.push_back(screen);
    screen->view().frame = {0, 0, 400, 800};
    screen->view().safeAreaTop = 40;
    screen->viewDidLoad();
    screen->viewDidLayoutSubviews();
    screen->viewWillAppear();
    if (completion) dispatch_->async(std::move(completion));
  }

  void dismiss(Screen& screen, bool /*animated*/, std::function<void()> completion) override {
    std::shared_ptr<Screen> gone;
    std::erase_if(screens, [&](const std::shared_ptr<Screen>& shown) {
      if (shown.get() == &screen) gone = shown;
      return shown.get() == &screen;
    });
    dispatch_->asyncAfter(dismissal, [gone, completion = std::move(completion)] {
      if (gone) gone->viewWillDisappear();
      if (completion) completion();
    });
  }

  void setNavigationBarHidden(bool hidden) override { navigationBarHidden = hidden; }
  void presentAlert(Alert alert) override { alerts.push_back(std::move(alert)); }
  void openSettings() override { ++settingsOpened; }
  void pickPhoto(std::function<void(std::optional<Image>)> completion) override {
    pickers.push_back(std::move(completion));
  }
  WorkItem animate(Animation animation) override {
    (animation.crossDissolvedView ? crossDissolves : animations).push_back(animation.duration);
    if (animation.changes) animation.changes();
    if (!animation.completion) return {};
    return dispatch_->asyncAfter(animation.duration, std::move(animation.completion));
  }
  Size textSize(const std::string& text, const Font& font) const override {
    return {static_cast<double>(text.size()) / 3 * font.size, font.size * 1.2};
  }

 private:
  std::shared_ptr<ManualDispatch> dispatch_;
};

}  // namespace pravik::test
