#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Platform/View.h"

namespace pravik {

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

}  // namespace pravik
