#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/async_result.hpp>
#include <asio/awaitable.hpp>
#include <asio/co_spawn.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "OCRError.h"

namespace pravik {

/// A suspending operation. It starts when it is awaited, spawned on an executor, or given to syncWait(). Its
/// failures are exceptions; those of the public operations are OCRError.
template <class T>
using Task = asio::awaitable<T>;

namespace detail {

/// Runs a task on the calling thread until it ends; the result or the exception is handed to `finish`.
template <class T, class Finish>
void runToEnd(Task<T> task, Finish finish) {
  asio::io_context loop(1);
  asio::co_spawn(loop, std::move(task), std::move(finish));
  loop.run();
}

}  // namespace detail

/// Runs a suspending operation to its end and blocks the calling thread meanwhile, for programs without a loop.
/// An OCRError becomes the result's error; any other exception is thrown on.
template <class T>
Result<T> syncWait(Task<T> task) {
  std::exception_ptr failure;
  std::optional<T> value;
  detail::runToEnd(std::move(task), [&](std::exception_ptr error, T result) {
    failure = std::move(error);
    if (!failure) value = std::move(result);
  });
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): without a failure there is one.
  if (!failure) return std::move(*value);
  try {
    std::rethrow_exception(failure);
  } catch (const OCRError& error) {
    return tl::unexpected(error);
  }
}

/// Suspends the caller until `start`'s argument is called with the result, which must happen exactly once and may
/// happen on any thread; an error of the result is thrown in the caller. The caller goes on on its own executor.
template <class T>
Task<T> suspendUntilCalled(std::function<void(std::function<void(Result<T>)>)> start) {
  // The result travels in a holder of its own, so that T needs no default constructor.
  auto holder = std::make_shared<std::optional<Result<T>>>();
  co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(
      [&](auto handler) {
        auto resume = std::make_shared<decltype(handler)>(std::move(handler));
        auto executor = asio::get_associated_executor(*resume);
        start([resume, holder, work = asio::make_work_guard(executor)](Result<T> result) {
          *holder = std::move(result);
          asio::post(work.get_executor(), [resume] { std::move (*resume)(); });
        });
      },
      asio::use_awaitable);
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): what resumes fills it first.
  Result<T>& result = **holder;
  if (!result) throw OCRError(result.error());
  co_return std::move(*result);
}

}  // namespace pravik
