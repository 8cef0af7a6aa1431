#include "apps/pravik/ObservedDispatch.h"

#include <utility>

namespace pravik::cli {

ObservedDispatch::ObservedDispatch(std::shared_ptr<Dispatch> dispatch, std::weak_ptr<DispatchObserver> observer)
    : dispatch_(std::move(dispatch)), observer_(std::move(observer)) {}

void ObservedDispatch::async(std::function<void()> work) {
  dispatch_->async([observer = observer_, work = std::move(work)] {
    work();
    if (const auto listener = observer.lock()) listener->workDone();
  });
}

WorkItem ObservedDispatch::asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  auto isPending = std::make_shared<bool>(true);
  const auto tell = [observer = observer_, delay](TimerChange change) {
    if (const auto listener = observer.lock()) listener->timerChanged(delay, change);
  };
  tell(TimerChange::started);
  const WorkItem item = dispatch_->asyncAfter(delay, [observer = observer_, isPending, tell, work = std::move(work)] {
    *isPending = false;
    tell(TimerChange::fired);
    work();
    if (const auto listener = observer.lock()) listener->workDone();
  });
  return WorkItem([item, isPending, tell] {
    item.cancel();
    if (std::exchange(*isPending, false)) tell(TimerChange::cancelled);
  });
}

void ObservedDispatch::asyncGlobal(std::function<void()> work) {
  dispatch_->asyncGlobal(std::move(work));
}

std::shared_ptr<SerialQueue> ObservedDispatch::makeSerialQueue(const std::string& label) {
  return serialQueues_.emplace_back(dispatch_->makeSerialQueue(label));
}

}  // namespace pravik::cli
