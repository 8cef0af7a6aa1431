#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <optional>
#include <semaphore>
#include <utility>

namespace pravik::cli {

/// A place of a semaphore, waited for and given back.
class Place {
 public:
  explicit Place(std::counting_semaphore<>& places) : places_(places) { places_.acquire(); }
  ~Place() { places_.release(); }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

 private:
  std::counting_semaphore<>& places_;
};

/// Works on `count` items, `atOnce` at a time: `work(item)` runs on threads of its own, and `take(item, result)` on the
/// calling thread for one item after the other, in order, each as soon as its turn comes. `take` ends the batch by
/// returning false; so does `stopped`, which is asked on any thread before each item. Items that were begun are
/// finished, and at most twice `atOnce` results wait for their turn. Returns how many items were taken. What `work` or
/// `take` throws ends the batch when its turn comes and is thrown on.
template <class T>
std::size_t runInOrder(std::size_t count, int atOnce, const std::function<bool()>& stopped,
                       const std::function<T(std::size_t item)>& work,
                       const std::function<bool(std::size_t item, T result)>& take) {
  std::atomic<bool> ended = false;
  std::counting_semaphore<> places(std::max(1, atOnce));
  const auto workWhenThereIsAPlace = [&](std::size_t item) -> std::optional<T> {
    const Place place(places);
    if (ended || stopped()) return std::nullopt;
    return work(item);
  };
  // Its futures wait for their work before what that uses is gone.
  std::deque<std::future<std::optional<T>>> begun;
  std::size_t next = 0;
  const auto begin = [&] {
    // Of several that wait for one place any may get it; one at a time goes in order.
    const std::size_t most = atOnce <= 1 ? 1 : 2 * static_cast<std::size_t>(atOnce);
    for (; next < count && begun.size() < most; ++next)
      begun.push_back(std::async(std::launch::async, workWhenThereIsAPlace, next));
  };

  std::size_t taken = 0;
  try {
    for (begin(); !begun.empty(); begin()) {
      std::optional<T> result = begun.front().get();
      begun.pop_front();
      if (!result || !take(taken++, std::move(*result))) break;
    }
  } catch (...) {
    ended = true;
    throw;
  }
  ended = true;
  return taken;
}

}  // namespace pravik::cli
