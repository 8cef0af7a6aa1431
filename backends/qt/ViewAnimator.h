#pragma once

#include <QImage>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "Platform/Geometry.h"
#include "Platform/View.h"

namespace pravik {

/// What an animation can change of a view little by little.
struct ViewLook {
  Rect frame;
  double alpha = 1;
  Color backgroundColor;

  bool operator==(const ViewLook&) const = default;
};

/// The old look of a view, fading into the new one.
struct Dissolve {
  QImage picture;
  /// Where the view was, in points of its superview.
  Rect frame;
  /// How much of the new look there is, from 0 to 1.
  double progress = 0;
};

/// Tells how views are drawn while animations are under way. A view's own values are those of the end; a value that is
/// set anew meanwhile is drawn at once.
class ViewAnimator {
 public:
  using Clock = std::chrono::steady_clock;

  /// Runs `changes` and lets the views of these trees follow little by little. Returns the animation's number. When
  /// `dissolved` is one of the views, `picture` is its old look, to fade out meanwhile.
  std::uint64_t animate(const std::vector<View*>& roots, const std::function<void()>& changes,
                        std::chrono::milliseconds duration, Clock::time_point now, const View* dissolved = nullptr,
                        QImage picture = {});
  /// Shows the views of an animation as they are.
  void cancel(std::uint64_t animation);
  /// Forgets what has ended by then; looks are those of that time from now on.
  void advance(Clock::time_point now);
  bool isIdle() const { return transitions_.empty() && dissolves_.empty(); }

  ViewLook look(const View& view) const;
  std::optional<Dissolve> dissolve(const View& view) const;

 private:
  struct Course {
    std::uint64_t animation = 0;
    Clock::time_point start;
    std::chrono::milliseconds duration{0};

    bool isOver(Clock::time_point now) const { return now - start >= duration; }
    /// Eased; from 0 to 1.
    double progress(Clock::time_point now) const;
  };
  struct Transition {
    Course course;
    ViewLook from;
    ViewLook to;
  };
  struct FadingPicture {
    Course course;
    QImage picture;
    Rect frame;
  };
  using Looks = std::map<const View*, ViewLook>;

  static void collect(const View& view, const std::function<ViewLook(const View&)>& look, Looks& looks);

  std::map<const View*, Transition> transitions_;
  std::map<const View*, FadingPicture> dissolves_;
  Clock::time_point now_;
  std::uint64_t count_ = 0;
};

}  // namespace pravik
