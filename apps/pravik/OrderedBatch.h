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

/// Works on the items that `next` gives until it gives none, `atOnce` at a time: `work(item)` runs on threads of its
/// own, `next` and `take(result)` on the calling thread, `take` for one item after the other, in order, each as soon as
/// its turn comes. `take` ends the batch by returning false; so does `stopped`, which is asked on any thread before
/// each item. Items that were begun are finished, and at most twice `atOnce` results wait for their turn. Returns
/// whether all items were taken. What a function throws ends the batch when its turn comes and is thrown on.
template <class Item, class T>
bool runInOrder(const std::function<std::optional<Item>()>& next, int atOnce, const std::function<bool()>& stopped,
                const std::function<T(const Item&)>& work, const std::function<bool(T result)>& take) {
  std::atomic<bool> ended = false;
  std::counting_semaphore<> places(std::max(1, atOnce));
  const auto workWhenThereIsAPlace = [&](const Item& item) -> std::optional<T> {
    const Place place(places);
    if (ended || stopped()) return std::nullopt;
    return work(item);
  };
  // Its futures wait for their work before what that uses is gone.
  std::deque<std::future<std::optional<T>>> begun;
  const auto begin = [&] {
    // Of several that wait for one place any may get it; one at a time goes in order.
    const std::size_t most = atOnce <= 1 ? 1 : 2 * static_cast<std::size_t>(atOnce);
    while (begun.size() < most) {
      auto item = next();
      if (!item) return;
      begun.push_back(std::async(std::launch::async, workWhenThereIsAPlace, *std::move(item)));
    }
  };

  try {
    for (begin(); !begun.empty(); begin()) {
      std::optional<T> result = begun.front().get();
      begun.pop_front();
      if (!result || !take(std::move(*result))) {
        ended = true;
        return false;
      }
    }
  } catch (...) {
    ended = true;
    throw;
  }
  return true;
}

}  // namespace pravik::cli
