#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Async/Task.h"
#include "Platform/Dispatch.h"

namespace pravik {

/// The result of work that may throw: an OCRError as it is, anything else as recognitionFailed with its text.
template <class T>
Result<T> resultOf(const std::function<Result<T>()>& work) {
  try {
    return work();
  } catch (const OCRError& error) {
    return tl::unexpected(error);
  } catch (...) {
    return tl::unexpected(OCRError::recognitionFailed(textOf(std::current_exception())));
  }
}

/// Runs work on the concurrent pool and then hands its result, as resultOf() has it, to `completion` there; without a
/// dispatch both at once. What the work holds is let go before: who is answered may end the program, and an engine must
/// not be torn down by the pool while it ends.
template <class T>
void runAndAnswer(const std::shared_ptr<Dispatch>& dispatch, std::function<Result<T>()> work,
                  std::function<void(Result<T>)> completion) {
  if (!dispatch) return completion(resultOf(work));
  // All copies of what the pool is given share one.
  const auto held = std::make_shared<std::function<Result<T>()>>(std::move(work));
  dispatch->asyncGlobal([held, completion = std::move(completion)] {
    Result<T> result = resultOf(*held);
    *held = nullptr;
    completion(std::move(result));
  });
}

/// Runs blocking work on the concurrent pool, so that whoever awaits it is not held up; without a dispatch at once.
/// Its failures are those of resultOf().
///
/// The work must be a named object in a coroutine: GCC 12 destroys twice what is made within the awaiting expression.
template <class T>
Task<T> runOnPool(std::shared_ptr<Dispatch> dispatch, std::function<Result<T>()> work) {
  return suspendUntilCalled<T>(
      [dispatch = std::move(dispatch), work = std::move(work)](std::function<void(Result<T>)> completion) {
        runAndAnswer(dispatch, work, std::move(completion));
      });
}

/// Runs a task on the pool and hands its end to `completion` on the main queue, exactly once; without a dispatch both
/// at once. An exception other than OCRError becomes recognitionFailed with its text; a dispatch that goes meanwhile,
/// `cancelled`. What the completion throws is logged.
template <class T>
void runWithCompletion(const std::shared_ptr<Dispatch>& dispatch, Task<T> task,
                       std::function<void(Result<T>)> completion) {
  const auto answer = std::make_shared<AnswerOnce<T>>(std::move(completion));
  if (!dispatch) return answer->give(resultOf(std::function<Result<T>()>([&] { return syncWait(std::move(task)); })));
  const auto value = std::make_shared<std::optional<T>>();
  detail::spawnOnPool(dispatch, detail::keepResult(std::move(task), value),
                      [dispatch, answer, value](const std::exception_ptr& failure) {
                        const std::function<Result<T>()> outcome = [&]() -> Result<T> {
                          if (failure) std::rethrow_exception(failure);
                          // NOLINTNEXTLINE(bugprone-unchecked-optional-access): without a failure there is one.
                          return std::move(**value);
                        };
                        dispatch->async([answer, result = resultOf(outcome)] { answer->give(result); });
                      });
}

}  // namespace pravik
