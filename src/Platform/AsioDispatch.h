#pragma once

#include <memory>

#include "Platform/Dispatch.h"

namespace pravik {

/// The queues of a program without an event loop of its own: a thread of its own serves as the main queue, and a
/// pool of threads runs the rest. Destroying it waits for the work that runs and drops what has not begun.
class AsioDispatch : public Dispatch {
 public:
  /// `poolThreads`: threads of the concurrent pool; 0 means one for each core.
  explicit AsioDispatch(int poolThreads = 0);
  ~AsioDispatch() override;
  AsioDispatch(const AsioDispatch&) = delete;
  AsioDispatch& operator=(const AsioDispatch&) = delete;

  void async(std::function<void()> work) override;
  WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  void asyncGlobal(std::function<void()> work) override;
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) override;

 private:
  struct Loops;
  class StrandQueue;
  std::shared_ptr<Loops> loops_;
};

}  // namespace pravik
