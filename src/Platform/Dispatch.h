#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace pravik {

/// A piece of work that waits for its time and can be called off until then. Copies stand for the same piece.
class WorkItem {
 public:
  WorkItem() = default;
  explicit WorkItem(std::function<void()> cancel) : cancel_(std::move(cancel)) {}

  /// Calls the work off. Does nothing when it has run, runs, or was called off before.
  void cancel() const {
    if (cancel_) cancel_();
  }

 private:
  std::function<void()> cancel_;
};

/// Runs its work one after the other, in the order given.
class SerialQueue {
 public:
  virtual ~SerialQueue() = default;
  virtual void async(std::function<void()> work) = 0;
};

/// The queues of a process. None of these calls blocks or runs the work before it returns.
class Dispatch {
 public:
  virtual ~Dispatch() = default;

  /// Runs work on the main queue: one piece after the other, in order, on one thread.
  virtual void async(std::function<void()> work) = 0;
  /// Runs work on the main queue after a while.
  virtual WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) = 0;
  /// Runs work on the concurrent pool, at once if a thread is free.
  virtual void asyncGlobal(std::function<void()> work) = 0;
  /// A queue of its own beside the main queue; the label is for people who debug.
  virtual std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) = 0;
};

}  // namespace pravik
