#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Platform/Stage.h"

namespace pravik::cli {

/// A stage without a window: screens come at once and go after the time that others see them go, animations take
/// theirs, alerts are answered with their cancelling action, and nobody picks a photo.
class HeadlessStage final : public Stage, public std::enable_shared_from_this<HeadlessStage> {
 public:
  /// `size` is that of the screens, in points.
  HeadlessStage(std::shared_ptr<Dispatch> dispatch, Size size);

  void present(std::shared_ptr<Screen> screen, bool animated, std::function<void()> completion) override;
  void dismiss(Screen& screen, bool animated, std::function<void()> completion) override;
  void setNavigationBarHidden(bool /*hidden*/) override {}
  void presentAlert(Alert alert) override;
  void openSettings() override {}
  void pickPhoto(std::function<void(std::optional<Image>)> completion) override;
  WorkItem animate(Animation animation) override;
  Size textSize(const std::string& text, const Font& font) const override;

  /// Takes all screens away at once and forgets who waits for a dismissal.
  void clear();

 private:
  struct Dismissal {
    std::shared_ptr<Screen> screen;
    std::function<void()> completion;
  };

  void finishDismissal(std::int64_t number);

  std::shared_ptr<Dispatch> dispatch_;
  Size size_;
  std::vector<std::shared_ptr<Screen>> screens_;
  /// Those under way, by a running number.
  std::map<std::int64_t, Dismissal> dismissals_;
  std::int64_t dismissalCount_ = 0;
};

}  // namespace pravik::cli
