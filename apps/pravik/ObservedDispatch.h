#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Dispatch.h"

namespace pravik::cli {

/// What became of a piece of delayed work.
enum class TimerChange : std::uint8_t { started, fired, cancelled };

/// Hears what passes over a main queue; called there.
class DispatchObserver {
 public:
  virtual ~DispatchObserver() = default;
  /// A piece of work has been done.
  virtual void workDone() = 0;
  /// A piece of delayed work was put off by `delay`, is about to run, or was called off.
  virtual void timerChanged(std::chrono::milliseconds delay, TimerChange change) = 0;
};

/// Another dispatch whose main queue can be observed. Delayed work must be given and called off on the main queue.
class ObservedDispatch final : public Dispatch {
 public:
  ObservedDispatch(std::shared_ptr<Dispatch> dispatch, std::weak_ptr<DispatchObserver> observer);

  void async(std::function<void()> work) override;
  WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  void asyncGlobal(std::function<void()> work) override;
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) override;

  /// The serial queues that were made.
  const std::vector<std::shared_ptr<SerialQueue>>& serialQueues() const { return serialQueues_; }

 private:
  std::shared_ptr<Dispatch> dispatch_;
  std::weak_ptr<DispatchObserver> observer_;
  std::vector<std::shared_ptr<SerialQueue>> serialQueues_;
};

}  // namespace pravik::cli
