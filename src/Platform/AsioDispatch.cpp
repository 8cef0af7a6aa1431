#include "Platform/AsioDispatch.h"

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>
#include <asio/thread_pool.hpp>
#include <atomic>
#include <thread>
#include <utility>

namespace pravik {
namespace {

std::size_t poolSize(int threads) {
  if (threads > 0) return static_cast<std::size_t>(threads);
  return std::max(1U, std::thread::hardware_concurrency());
}

struct DelayedWork {
  DelayedWork(asio::io_context& loop, std::chrono::milliseconds delay, std::function<void()> work)
      : timer(loop, delay), run(std::move(work)) {}

  asio::steady_timer timer;
  std::function<void()> run;
  std::atomic<bool> cancelled = false;
};

/// A context that can let go of its work before it ends.
template <class Context>
struct Droppable : Context {
  using Context::Context;
  void dropWork() { this->shutdown(); }
};

}  // namespace

struct AsioDispatch::Loops {
  explicit Loops(int poolThreads) : pool(poolSize(poolThreads)) {
    mainThread = std::thread([this] { main.run(); });
  }
  ~Loops() { stop(); }
  Loops(const Loops&) = delete;
  Loops& operator=(const Loops&) = delete;

  /// Waits for the work that runs; what has not begun never does.
  void stop() {
    if (hasStopped.exchange(true)) return;
    pool.stop();
    pool.join();
    main.stop();
    mainThread.join();
    // Work may own a serial queue, which would keep both contexts and with them that work.
    main.dropWork();
    pool.dropWork();
  }

  bool runsOnThisThread() const {
    return pool.get_executor().running_in_this_thread() || std::this_thread::get_id() == mainThread.get_id();
  }

  mutable Droppable<asio::thread_pool> pool;
  Droppable<asio::io_context> main{1};
  asio::executor_work_guard<asio::io_context::executor_type> keepsRunning{main.get_executor()};
  std::thread mainThread;
  std::atomic<bool> hasStopped = false;
};

/// May outlive the dispatch, whose pool a strand must not; work given after that is dropped.
class AsioDispatch::StrandQueue : public SerialQueue {
 public:
  explicit StrandQueue(std::shared_ptr<Loops> loops) : loops_(std::move(loops)), strand_(loops_->pool.get_executor()) {}
  void async(std::function<void()> work) override {
    if (!loops_->hasStopped) asio::post(strand_, std::move(work));
  }

 private:
  std::shared_ptr<Loops> loops_;
  asio::strand<asio::thread_pool::executor_type> strand_;
};

AsioDispatch::AsioDispatch(int poolThreads) : loops_(std::make_shared<Loops>(poolThreads)) {}

AsioDispatch::~AsioDispatch() {
  // The last owner may be a piece of work that runs here; a thread cannot wait for itself.
  if (loops_->runsOnThisThread())
    std::thread([loops = std::move(loops_)] { loops->stop(); }).detach();
  else
    loops_->stop();
}

void AsioDispatch::async(std::function<void()> work) {
  asio::post(loops_->main, std::move(work));
}

WorkItem AsioDispatch::asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  auto delayed = std::make_shared<DelayedWork>(loops_->main, delay, std::move(work));
  delayed->timer.async_wait([delayed](const std::error_code& error) {
    if (!error && !delayed->cancelled) delayed->run();
  });
  return WorkItem([waiting = std::weak_ptr(delayed)] {
    if (auto item = waiting.lock()) {
      item->cancelled = true;
      asio::post(item->timer.get_executor(), [item] { item->timer.cancel(); });
    }
  });
}

void AsioDispatch::asyncGlobal(std::function<void()> work) {
  asio::post(loops_->pool, std::move(work));
}

std::shared_ptr<SerialQueue> AsioDispatch::makeSerialQueue(const std::string& /*label*/) {
  return std::make_shared<StrandQueue>(loops_);
}

}  // namespace pravik
