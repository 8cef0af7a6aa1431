#include "Platform/ManualDispatch.h"

#include <utility>

namespace pravik {
namespace {

/// Runs the first piece of a queue, which may add to it.
template <class Queue>
void runFirst(Queue& queue) {
  auto work = std::move(queue.front());
  queue.pop_front();
  work();
}

/// With one thread, a queue that keeps the order of all work keeps that of its own.
class OrderedQueue : public SerialQueue {
 public:
  explicit OrderedQueue(std::shared_ptr<std::deque<std::function<void()>>> queue) : queue_(std::move(queue)) {}
  void async(std::function<void()> work) override { queue_->push_back(std::move(work)); }

 private:
  std::shared_ptr<std::deque<std::function<void()>>> queue_;
};

}  // namespace

ManualDispatch::~ManualDispatch() {
  main_.clear();
  delayed_.clear();
  while (!global_->empty()) {
    // Dropping work may bring new work.
    const auto dropped = std::move(global_->front());
    global_->pop_front();
  }
}

void ManualDispatch::async(std::function<void()> work) {
  main_.push_back(std::move(work));
}

WorkItem ManualDispatch::asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  auto item = std::make_shared<std::function<void()>>(std::move(work));
  delayed_.emplace(now_ + delay, item);
  return WorkItem([waiting = std::weak_ptr(item)] {
    if (auto cancelled = waiting.lock()) *cancelled = nullptr;
  });
}

void ManualDispatch::asyncGlobal(std::function<void()> work) {
  global_->push_back(std::move(work));
}

std::shared_ptr<SerialQueue> ManualDispatch::makeSerialQueue(const std::string& /*label*/) {
  return std::make_shared<OrderedQueue>(global_);
}

void ManualDispatch::runGlobal() {
  while (!global_->empty()) runFirst(*global_);
}

void ManualDispatch::runAll() {
  while (!global_->empty() || !main_.empty()) {
    runGlobal();
    if (!main_.empty()) runFirst(main_);
  }
}

void ManualDispatch::runNextDelayed() {
  now_ = delayed_.begin()->first;
  const auto item = delayed_.begin()->second;
  delayed_.erase(delayed_.begin());
  if (*item) main_.push_back(*item);
  runAll();
}

void ManualDispatch::advance(std::chrono::milliseconds time) {
  const std::chrono::milliseconds end = now_ + time;
  runAll();
  while (!delayed_.empty() && delayed_.begin()->first <= end) runNextDelayed();
  now_ = end;
}

bool ManualDispatch::advanceToNextWork() {
  runAll();
  if (delayed_.empty()) return false;
  runNextDelayed();
  return true;
}

}  // namespace pravik
