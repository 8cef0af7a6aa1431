#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace pravik::cli {

/// Works on `count` items, `workers` at a time: `work(worker, item)` runs on a thread of its own for each worker, and
/// `take(item, result)` runs on the calling thread for one item after the other, in order, each as soon as its turn
/// comes. `take` ends the batch by returning false; so does `stopped`, which is asked before each item. Items that
/// were begun are finished. Returns how many items were taken. What `work` or `take` throws ends the batch and is
/// thrown on.
template <class T>
std::size_t runInOrder(std::size_t count, int workers, const std::function<bool()>& stopped,
                       const std::function<T(int worker, std::size_t item)>& work,
                       const std::function<bool(std::size_t item, T result)>& take) {
  std::vector<std::optional<T>> results(count);
  std::exception_ptr failure;
  std::atomic<std::size_t> next{0};
  std::atomic<bool> ended{false};
  int running = static_cast<int>(std::min(static_cast<std::size_t>(std::max(1, workers)), count));
  std::mutex mutex;
  std::condition_variable changed;

  const auto workLoop = [&](int worker) {
    try {
      while (!ended && !stopped()) {
        const std::size_t item = next++;
        if (item >= count) break;
        T result = work(worker, item);
        const std::lock_guard lock(mutex);
        results[item] = std::move(result);
        changed.notify_one();
      }
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
      ended = true;
    }
    const std::lock_guard lock(mutex);
    --running;
    changed.notify_one();
  };

  std::size_t taken = 0;
  {
    std::vector<std::jthread> threads;
    const int started = running;
    threads.reserve(static_cast<std::size_t>(started));
    for (int worker = 0; worker < started; ++worker) threads.emplace_back(workLoop, worker);
    try {
      while (taken < count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return results[taken].has_value() || running == 0; });
        if (!results[taken].has_value()) break;
        // NOLINTNEXTLINE(bugprone-unchecked-optional-access): seen a line above.
        T result = *std::exchange(results[taken], std::nullopt);
        lock.unlock();
        const bool goOn = take(taken, std::move(result));
        ++taken;
        if (!goOn) break;
      }
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
    }
    ended = true;
  }
  if (failure) std::rethrow_exception(failure);
  return taken;
}

}  // namespace pravik::cli
