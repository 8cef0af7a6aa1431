#include "apps/pravik/HeadlessStage.h"

#include <algorithm>
#include <utility>

#include "apps/pravik/Table.h"

namespace pravik::cli {
namespace {

constexpr std::chrono::milliseconds dismissalDuration{300};
/// The height that a phone's clock and camera cover, in points.
constexpr double safeAreaTop = 47;
/// A column of text, half the width of a Chinese character, and a line of it, in parts of the font's size.
constexpr double columnWidth = 0.5, lineHeight = 1.2;

}  // namespace

HeadlessStage::HeadlessStage(std::shared_ptr<Dispatch> dispatch, Size size)
    : dispatch_(std::move(dispatch)), size_(size) {}

void HeadlessStage::present(std::shared_ptr<Screen> screen, bool /*animated*/, std::function<void()> completion) {
  screens_.push_back(screen);
  screen->view().frame = {0, 0, size_.width, size_.height};
  screen->view().safeAreaTop = safeAreaTop;
  screen->viewDidLoad();
  screen->viewDidLayoutSubviews();
  screen->viewWillAppear();
  if (completion) dispatch_->async(std::move(completion));
}

void HeadlessStage::dismiss(Screen& screen, bool animated, std::function<void()> completion) {
  Dismissal dismissal{nullptr, std::move(completion)};
  const auto shown = std::ranges::find(screens_, &screen, &std::shared_ptr<Screen>::get);
  if (shown != screens_.end()) {
    dismissal.screen = *shown;
    screens_.erase(shown);
  }
  const std::int64_t number = ++dismissalCount_;
  dismissals_[number] = std::move(dismissal);
  dispatch_->asyncAfter(animated ? dismissalDuration : std::chrono::milliseconds(0), [weak = weak_from_this(), number] {
    if (const auto stage = weak.lock()) stage->finishDismissal(number);
  });
}

void HeadlessStage::finishDismissal(std::int64_t number) {
  const auto dismissal = dismissals_.extract(number);
  if (!dismissal) return;
  if (dismissal.mapped().screen) dismissal.mapped().screen->viewWillDisappear();
  if (dismissal.mapped().completion) dismissal.mapped().completion();
}

void HeadlessStage::presentAlert(Alert alert) {
  for (Alert::Action& action : alert.actions)
    if (action.style == Alert::ActionStyle::cancel && action.handler)
      return dispatch_->async(std::move(action.handler));
}

void HeadlessStage::pickPhoto(std::function<void(std::optional<Image>)> completion) {
  dispatch_->async([completion = std::move(completion)] { completion(std::nullopt); });
}

WorkItem HeadlessStage::animate(Animation animation) {
  if (animation.changes) animation.changes();
  if (!animation.completion) return {};
  return dispatch_->asyncAfter(animation.duration, std::move(animation.completion));
}

Size HeadlessStage::textSize(const std::string& text, const Font& font) const {
  return {displayWidth(text) * columnWidth * font.size, lineHeight * font.size};
}

void HeadlessStage::clear() {
  for (const auto& [number, dismissal] : std::exchange(dismissals_, {}))
    if (dismissal.screen) dismissal.screen->viewWillDisappear();
  for (const std::shared_ptr<Screen>& screen : std::exchange(screens_, {})) screen->viewWillDisappear();
}

}  // namespace pravik::cli
