#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Async/RunOnPool.h"

namespace pravik {

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
