#include "backends/qt/ViewAnimator.h"

#include <gtest/gtest.h>

namespace pravik {
namespace {

using namespace std::chrono_literals;

struct Animated {
  View root;
  std::shared_ptr<View> child = std::make_shared<View>();
  ViewAnimator animator;
  ViewAnimator::Clock::time_point start{1h};

  Animated() { root.addSubview(child); }
  std::uint64_t moveTo(double y, std::chrono::milliseconds duration = 100ms) {
    return animator.animate({&root}, [this, y] { child->frame.y = y; }, duration, start);
  }
  double drawnY(std::chrono::milliseconds after) {
    animator.advance(start + after);
    return animator.look(*child).frame.y;
  }
};

TEST(ViewAnimator, EasesFromTheOldLookToTheNew) {
  Animated a;
  a.moveTo(80);
  EXPECT_EQ(a.child->frame.y, 80) << "the view has its final value at once";
  EXPECT_EQ(a.drawnY(0ms), 0);
  EXPECT_LT(a.drawnY(25ms), 20) << "slow at first";
  EXPECT_NEAR(a.drawnY(50ms), 40, 1e-9);
  EXPECT_GT(a.drawnY(75ms), 60) << "slow at the end";
  EXPECT_EQ(a.drawnY(100ms), 80);
  EXPECT_TRUE(a.animator.isIdle());

  // Colours fade from and to nothing without another hue.
  a.animator.animate({&a.root}, [&] { a.child->backgroundColor = {1, 1, 1, 0.4}; }, 100ms, a.start);
  a.animator.advance(a.start + 50ms);
  EXPECT_EQ(a.animator.look(*a.child).backgroundColor, (Color{1, 1, 1, 0.2}));
}

TEST(ViewAnimator, DrawsWhatIsSetAnewOrCalledOffAtOnce) {
  Animated a;
  a.moveTo(80);
  a.child->frame.y = 10;
  EXPECT_EQ(a.drawnY(50ms), 10);
  a.child->frame.y = 0;
  a.animator.cancel(a.moveTo(80));
  EXPECT_EQ(a.drawnY(50ms), 80);
}

TEST(ViewAnimator, GoesOnFromWhereAnAnimationWasOvertaken) {
  Animated a;
  a.moveTo(80);
  a.drawnY(50ms);
  a.start += 50ms;
  a.moveTo(0);
  EXPECT_NEAR(a.drawnY(0ms), 40, 1e-9);
  EXPECT_EQ(a.drawnY(100ms), 0);
}

TEST(ViewAnimator, KeepsTheOldPictureOfAViewThatDissolves) {
  Animated a;
  const QImage old(3, 2, QImage::Format_ARGB32);
  a.child->frame = {5, 6, 3, 2};
  a.animator.animate({&a.root}, [&] { a.child->frame.x = 50; }, 200ms, a.start, a.child.get(), old);
  a.animator.advance(a.start + 100ms);
  EXPECT_EQ(a.animator.look(*a.child).frame.x, 50) << "it does not move, it fades";
  const auto dissolve = a.animator.dissolve(*a.child);
  ASSERT_TRUE(dissolve);
  EXPECT_EQ(dissolve->frame, (Rect{5, 6, 3, 2}));
  EXPECT_EQ(dissolve->picture.size(), QSize(3, 2));
  EXPECT_DOUBLE_EQ(dissolve->progress, 0.5);
  a.animator.advance(a.start + 200ms);
  EXPECT_FALSE(a.animator.dissolve(*a.child));
}

}  // namespace
}  // namespace pravik
