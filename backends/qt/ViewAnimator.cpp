#include "backends/qt/ViewAnimator.h"

#include <algorithm>
#include <utility>

namespace pravik {
namespace {

ViewLook modelLook(const View& view) {
  return {view.frame, view.alpha, view.backgroundColor};
}

double mix(double from, double to, double progress) {
  return from + (to - from) * progress;
}

Rect mix(const Rect& from, const Rect& to, double progress) {
  return {mix(from.x, to.x, progress), mix(from.y, to.y, progress), mix(from.width, to.width, progress),
          mix(from.height, to.height, progress)};
}

/// Mixes what is seen: a colour that is invisible has no say in the hue.
Color mix(const Color& from, const Color& to, double progress) {
  const Color& start = from.alpha > 0 ? from : to.withAlpha(0);
  const Color& end = to.alpha > 0 ? to : from.withAlpha(0);
  return {mix(start.red, end.red, progress), mix(start.green, end.green, progress), mix(start.blue, end.blue, progress),
          mix(start.alpha, end.alpha, progress)};
}

}  // namespace

double ViewAnimator::Course::progress(Clock::time_point now) const {
  if (isOver(now)) return 1;
  const double time =
      std::max(0.0, std::chrono::duration<double>(now - start) / std::chrono::duration<double>(duration));
  // The cubic with flat ends.
  return time * time * (3 - 2 * time);
}

std::uint64_t ViewAnimator::animate(const std::vector<View*>& roots, const std::function<void()>& changes,
                                    std::chrono::milliseconds duration, Clock::time_point now, const View* dissolved,
                                    QImage picture) {
  advance(now);
  Looks drawn;
  Looks before;
  for (const View* root : roots) {
    collect(*root, [this](const View& view) { return look(view); }, drawn);
    collect(*root, modelLook, before);
  }
  if (changes) changes();
  Looks after;
  for (const View* root : roots) collect(*root, modelLook, after);

  const Course course{++count_, now, duration};
  for (const auto& [view, target] : after) {
    const auto old = before.find(view);
    if (old == before.end() || old->second == target || view == dissolved) continue;
    transitions_[view] = {course, drawn.at(view), target};
  }
  const auto old = drawn.find(dissolved);
  if (old != drawn.end()) dissolves_[dissolved] = {course, std::move(picture), old->second.frame};
  return course.animation;
}

void ViewAnimator::cancel(std::uint64_t animation) {
  const auto isPart = [animation](const auto& entry) { return entry.second.course.animation == animation; };
  std::erase_if(transitions_, isPart);
  std::erase_if(dissolves_, isPart);
}

void ViewAnimator::advance(Clock::time_point now) {
  now_ = now;
  const auto isOver = [now](const auto& entry) { return entry.second.course.isOver(now); };
  std::erase_if(transitions_, isOver);
  std::erase_if(dissolves_, isOver);
}

ViewLook ViewAnimator::look(const View& view) const {
  ViewLook result = modelLook(view);
  const auto found = transitions_.find(&view);
  if (found == transitions_.end()) return result;
  const Transition& transition = found->second;
  const double progress = transition.course.progress(now_);
  if (result.frame == transition.to.frame) result.frame = mix(transition.from.frame, result.frame, progress);
  if (result.alpha == transition.to.alpha) result.alpha = mix(transition.from.alpha, result.alpha, progress);
  if (result.backgroundColor == transition.to.backgroundColor)
    result.backgroundColor = mix(transition.from.backgroundColor, result.backgroundColor, progress);
  return result;
}

std::optional<Dissolve> ViewAnimator::dissolve(const View& view) const {
  const auto found = dissolves_.find(&view);
  if (found == dissolves_.end()) return std::nullopt;
  return Dissolve{found->second.picture, found->second.frame, found->second.course.progress(now_)};
}

void ViewAnimator::collect(const View& view, const std::function<ViewLook(const View&)>& look, Looks& looks) {
  looks[&view] = look(view);
  for (const auto& child : view.subviews()) collect(*child, look, looks);
}

}  // namespace pravik
