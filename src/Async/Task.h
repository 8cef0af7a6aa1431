#pragma once

#include <asio/awaitable.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Async/AnswerOnce.h"
#include "Platform/Dispatch.h"
#include "Records/OCRError.h"

namespace pravik {

/// A suspending operation. It starts when it is awaited, spawned on an executor, or given to syncWait(). Its
/// failures are exceptions; those of the public operations are OCRError. Asio's cancellation, for instance a
/// cancellation slot bound where it is spawned, ends it with `cancelled` as soon as it waits for work.
template <class T>
using Task = asio::awaitable<T>;

// What needs no type of a result is compiled once: Asio's templates take the compiler seconds each time.
namespace detail {

/// Runs a task on the calling thread until it ends; what it throws is thrown on.
void runToEnd(Task<void> task);

/// Runs a task on the dispatch's pool; `end` is told there what the task threw, or a null pointer. It is dropped with a
/// dispatch that goes meanwhile.
void spawnOnPool(const std::shared_ptr<Dispatch>& dispatch, Task<void> task,
                 std::function<void(std::exception_ptr failure)> end);

/// Suspends the caller until the function that `begin` is given is called, on any thread. When the caller is cancelled
/// meanwhile, `cancel` is called, which should have that function called.
Task<void> suspendUntilResumed(const std::function<void(std::function<void()> resume)>& begin,
                               const std::function<void()>& cancel);

template <class T>
Task<void> keepResult(Task<T> task, std::shared_ptr<std::optional<T>> result) {
  *result = co_await std::move(task);
}

}  // namespace detail

/// Runs a suspending operation to its end and blocks the calling thread meanwhile, for programs without a loop.
/// An OCRError becomes the result's error; any other exception is thrown on.
template <class T>
Result<T> syncWait(Task<T> task) {
  const auto result = std::make_shared<std::optional<T>>();
  try {
    detail::runToEnd(detail::keepResult(std::move(task), result));
  } catch (const OCRError& error) {
    return tl::unexpected(error);
  }
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a task that has not thrown has a result.
  return std::move(**result);
}

/// Suspends the caller until `start`'s argument is called with the result, on any thread; an error of the result is
/// thrown in the caller, which goes on on its own executor. When the argument is dropped without a call, or the
/// caller is cancelled, the error is `cancelled`; when `start` throws, recognitionFailed with its text. When the
/// caller's loop is destroyed meanwhile, the caller is unwound with it.
template <class T>
Task<T> suspendUntilCalled(std::function<void(std::function<void(Result<T>)>)> start) {
  // The result travels in a holder of its own, so that T needs no default constructor.
  const auto holder = std::make_shared<std::optional<Result<T>>>();
  const auto waiting = std::make_shared<std::weak_ptr<AnswerOnce<T>>>();
  const std::function<void(std::function<void()>)> begin = [&](const std::function<void()>& resume) {
    const auto once = std::make_shared<AnswerOnce<T>>([resume, holder](Result<T> result) {
      *holder = std::move(result);
      resume();
    });
    *waiting = once;
    if (const auto failure = failureOf([&] { start([once](Result<T> result) { once->give(std::move(result)); }); }))
      once->give(tl::unexpected(OCRError::recognitionFailed(*failure)));
  };
  const std::function<void()> cancel = [waiting] {
    if (const auto answer = waiting->lock()) answer->give(tl::unexpected(OCRError::cancelled()));
  };
  co_await detail::suspendUntilResumed(begin, cancel);
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): what resumes fills it first.
  Result<T>& result = **holder;
  if (!result) throw OCRError(result.error());
  co_return std::move(*result);
}

}  // namespace pravik
