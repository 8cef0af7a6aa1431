#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "UI/OCRScannerViewController.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// What became of a piece of delayed work.
enum class TimerChange : std::uint8_t { started, fired, cancelled };

/// Looks at a scanner's screen after each piece of work on the main queue, tells as events what has changed, and taps
/// the button for manual capture as a person would.
class ScanWatch {
 public:
  using Clock = std::function<std::chrono::milliseconds()>;
  using Tell = std::function<void(Json event)>;

  /// `tell` gets {"time":seconds,"event":…} and the event's own members.
  ScanWatch(Clock clock, Tell tell, bool tapsManualCapture);

  void watch(const std::shared_ptr<OCRScannerViewController>& screen) { screen_ = screen; }

  /// Tells an event of the given name at the present time.
  void tell(const std::string& event, const Json& members) const;

  /// A piece of work has been done on the main queue.
  void workDone();
  /// A piece of delayed work was put off by `delay`, is about to run, or was called off.
  void timerChanged(std::chrono::milliseconds delay, TimerChange change) const;

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

/// Another dispatch whose main queue is watched. Delayed work must be given and called off on the main queue.
class ObservedDispatch final : public Dispatch {
 public:
  ObservedDispatch(std::shared_ptr<Dispatch> dispatch, std::weak_ptr<ScanWatch> watch);

  void async(std::function<void()> work) override;
  WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  void asyncGlobal(std::function<void()> work) override { dispatch_->asyncGlobal(std::move(work)); }
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) override;

  /// The serial queues that were made.
  const std::vector<std::shared_ptr<SerialQueue>>& serialQueues() const { return serialQueues_; }

 private:
  std::shared_ptr<Dispatch> dispatch_;
  std::weak_ptr<ScanWatch> watch_;
  std::vector<std::shared_ptr<SerialQueue>> serialQueues_;
};

}  // namespace pravik::cli
