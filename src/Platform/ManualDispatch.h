#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Platform/Dispatch.h"

namespace pravik {

/// A dispatch whose clock its owner moves by hand: nothing runs until it says so, everything runs on its thread, and
/// the same work always runs in the same order. For tests, and for programs that follow a recording's time.
class ManualDispatch : public Dispatch {
 public:
  ManualDispatch() = default;
  /// Drops the work that was never run, also where a serial queue lives on.
  ~ManualDispatch() override;
  ManualDispatch(const ManualDispatch&) = delete;
  ManualDispatch& operator=(const ManualDispatch&) = delete;

  void async(std::function<void()> work) override;
  WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  void asyncGlobal(std::function<void()> work) override;
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) override;

  /// The time since the beginning. Work takes no time.
  std::chrono::milliseconds now() const { return now_; }

  /// Runs the work of the concurrent pool and the serial queues, and what that adds, until there is none.
  void runGlobal();
  /// Runs everything that is due now: the pool, the serial queues and the main queue.
  void runAll();
  /// Moves the clock, running the delayed work at its times and what that adds.
  void advance(std::chrono::milliseconds time);
  /// Runs everything that is due now, then moves the clock to the next delayed work and runs it and what that adds.
  /// False when there is no delayed work.
  bool advanceToNextWork();

  std::size_t waitingOnMain() const { return main_.size(); }

 private:
  using Queue = std::deque<std::function<void()>>;

  void runNextDelayed();

  Queue main_;
  std::shared_ptr<Queue> global_ = std::make_shared<Queue>();
  std::chrono::milliseconds now_{0};
  std::multimap<std::chrono::milliseconds, std::shared_ptr<std::function<void()>>> delayed_;
};

}  // namespace pravik
