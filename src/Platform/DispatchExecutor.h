#pragma once

#include <asio/execution.hpp>
#include <asio/execution_context.hpp>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "Platform/Dispatch.h"

namespace pravik {

/// An Asio executor that runs its work on a dispatch's concurrent pool, or on its main queue, so that a Task can be
/// spawned there.
class DispatchExecutor {
 public:
  using Queue = void (Dispatch::*)(std::function<void()>);

  /// `queue`: &Dispatch::asyncGlobal for the pool, &Dispatch::async for the main queue.
  explicit DispatchExecutor(std::shared_ptr<Dispatch> dispatch, Queue queue = &Dispatch::asyncGlobal)
      : dispatch_(std::move(dispatch)), queue_(queue), context_(std::make_shared<asio::execution_context>()) {}

  asio::execution_context& query(asio::execution::context_t /*property*/) const noexcept { return *context_; }
  static constexpr asio::execution::blocking_t::never_t query(asio::execution::blocking_t /*property*/) noexcept {
    return {};
  }

  template <class Function>
  void execute(Function&& function) const {
    // A queue takes copyable work; Asio's handlers can only be moved.
    auto work = std::make_shared<std::decay_t<Function>>(std::forward<Function>(function));
    (*dispatch_.*queue_)([work] { std::move (*work)(); });
  }

  bool operator==(const DispatchExecutor& other) const noexcept {
    return dispatch_ == other.dispatch_ && queue_ == other.queue_;
  }

 private:
  std::shared_ptr<Dispatch> dispatch_;
  Queue queue_;
  std::shared_ptr<asio::execution_context> context_;
};

}  // namespace pravik
