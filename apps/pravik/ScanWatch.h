#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "UI/OCRScannerViewController.h"
#include "apps/pravik/ObservedDispatch.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// Looks at a scanner's screen after each piece of work on the main queue, tells as events what has changed, and taps
/// the button for manual capture as a person would.
class ScanWatch final : public DispatchObserver {
 public:
  using Clock = std::function<std::chrono::milliseconds()>;
  using Tell = std::function<void(Json event)>;

  /// `tell` gets {"time":seconds,"event":…} and the event's own members.
  ScanWatch(Clock clock, Tell tell, bool tapsManualCapture);

  void watch(const std::shared_ptr<OCRScannerViewController>& screen) { screen_ = screen; }

  /// Tells an event of the given name at the present time.
  void tell(const std::string& event, const Json& members) const;

  void workDone() override;
  void timerChanged(std::chrono::milliseconds delay, TimerChange change) override;

 private:
  /// What a person sees of the screen, as far as it is told.
  struct Look {
    ScannerOverlayView::ScanState state;
    std::string hint;
    std::optional<Rect> outline;
    bool offersManualCapture = false;
    std::int64_t failedAttempts = 0;
  };

  static Look lookAt(const OCRScannerViewController& screen);
  void tellState(const Look& now) const;
  void tellOutline(const Look& now) const;
  void tapIfReady(OCRScannerViewController& screen);

  Clock clock_;
  Tell tell_;
  bool tapsManualCapture_;
  std::weak_ptr<OCRScannerViewController> screen_;
  Look last_;
  /// Since when the button has been there.
  std::chrono::milliseconds offeredAt_{0};
};

}  // namespace pravik::cli
