#pragma once

#include <QObject>
#include <memory>

#include "Platform/AsioDispatch.h"
#include "Platform/Dispatch.h"

namespace pravik {

/// The queues of a program with Qt's event loop: the thread that makes it is the main queue, and work on it runs
/// while its loop does. The pool and the serial queues run on threads of their own. Destroying it waits for the work
/// that runs and drops what has not begun.
class QtDispatch : public Dispatch {
 public:
  /// `poolThreads`: threads of the concurrent pool; 0 means one for each core.
  explicit QtDispatch(int poolThreads = 0);
  ~QtDispatch() override;
  QtDispatch(const QtDispatch&) = delete;
  QtDispatch& operator=(const QtDispatch&) = delete;

  void async(std::function<void()> work) override;
  WorkItem asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  void asyncGlobal(std::function<void()> work) override { pool_->asyncGlobal(std::move(work)); }
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& label) override {
    return pool_->makeSerialQueue(label);
  }

 private:
  /// Receives the work of the main queue; lives on its thread.
  std::unique_ptr<QObject> main_;
  std::unique_ptr<AsioDispatch> pool_;
};

}  // namespace pravik
