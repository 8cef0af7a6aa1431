#include "Async/Task.h"

#include <asio/associated_cancellation_slot.hpp>
#include <asio/associated_executor.hpp>
#include <asio/async_result.hpp>
#include <asio/co_spawn.hpp>
#include <asio/execution/outstanding_work.hpp>
#include <asio/execution_context.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/prefer.hpp>
#include <asio/use_awaitable.hpp>
#include <mutex>
#include <vector>

#include "Platform/DispatchExecutor.h"

namespace pravik::detail {
namespace {

/// A caller that waits for something outside its loop. Whoever has the answer wakes it through its executor, on any
/// thread; when the loop is destroyed first, the loop unwinds the caller and the answer finds nobody.
class SuspendedCall {
 public:
  /// `handler` is what goes on with the caller. Called on the caller's executor, before anybody may call resume().
  template <class Executor, class Handler>
  static void suspend(const std::shared_ptr<SuspendedCall>& call, const Executor& executor, Handler handler);

  /// Wakes the caller; only the first call does anything.
  void resume() {
    const std::scoped_lock lock(mutex_);
    // The lock keeps a loop that is being destroyed waiting until the caller has been handed over to it.
    if (wake_) std::exchange(wake_, nullptr)();
  }

  /// Lets go of the caller, whose loop is being destroyed.
  void abandon() {
    std::function<void()> wake;
    {
      const std::scoped_lock lock(mutex_);
      wake.swap(wake_);
    }
  }

 private:
  /// Recursive: waking a caller may let go of the last executor of its context, whose end then abandons the caller.
  std::recursive_mutex mutex_;
  std::function<void()> wake_;
};

/// The suspended callers of one execution context, so that its destruction reaches them.
class SuspendedCalls : public asio::execution_context::service {
 public:
  using key_type = SuspendedCalls;
  static inline asio::execution_context::id id;

  explicit SuspendedCalls(asio::execution_context& context) : service(context) {}

  void add(const std::shared_ptr<SuspendedCall>& call) {
    const std::scoped_lock lock(mutex_);
    std::erase_if(calls_, [](const auto& known) { return known.expired(); });
    calls_.push_back(call);
  }

 private:
  void shutdown() override {
    std::vector<std::weak_ptr<SuspendedCall>> calls;
    {
      const std::scoped_lock lock(mutex_);
      calls.swap(calls_);
    }
    for (const auto& known : calls)
      if (const auto call = known.lock()) call->abandon();
  }

  std::mutex mutex_;
  std::vector<std::weak_ptr<SuspendedCall>> calls_;
};

template <class Executor, class Handler>
void SuspendedCall::suspend(const std::shared_ptr<SuspendedCall>& call, const Executor& executor, Handler handler) {
  // A loop must not end for lack of work while somebody else works for its caller.
  auto tracked = asio::prefer(executor, asio::execution::outstanding_work_t::tracked);
  auto shared = std::make_shared<Handler>(std::move(handler));
  call->wake_ = [tracked, shared] { asio::post(tracked, [shared] { std::move (*shared)(); }); };
  asio::use_service<SuspendedCalls>(asio::query(executor, asio::execution::context)).add(call);
}

}  // namespace

void runToEnd(Task<void> task) {
  asio::io_context loop(1);
  std::exception_ptr failure;
  asio::co_spawn(loop, std::move(task), [&](std::exception_ptr thrown) { failure = std::move(thrown); });
  loop.run();
  if (failure) std::rethrow_exception(failure);
}

void spawnOnPool(const std::shared_ptr<Dispatch>& dispatch, Task<void> task,
                 std::function<void(std::exception_ptr failure)> end) {
  asio::co_spawn(DispatchExecutor(dispatch), std::move(task), std::move(end));
}

Task<void> suspendUntilResumed(const std::function<void(std::function<void()> resume)>& begin,
                               const std::function<void()>& cancel) {
  co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(
      [&](auto handler) {
        const auto call = std::make_shared<SuspendedCall>();
        if (auto slot = asio::get_associated_cancellation_slot(handler); slot.is_connected())
          slot.assign([cancel](asio::cancellation_type /*type*/) { cancel(); });
        const auto executor = asio::get_associated_executor(handler);
        SuspendedCall::suspend(call, executor, std::move(handler));
        begin([call] { call->resume(); });
      },
      asio::use_awaitable);
}

}  // namespace pravik::detail
