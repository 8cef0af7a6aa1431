#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "OCRError.h"
#include "Platform/Dispatch.h"
#include "Task.h"

namespace pravik {

/// Runs blocking work on the concurrent pool, so that whoever awaits it is not held up; without a dispatch at once.
/// Any exception of the work becomes recognitionFailed with its text.
///
/// The work must be a named object in a coroutine: GCC 12 destroys twice what is made within the awaiting expression.
template <class T>
Task<T> runOnPool(std::shared_ptr<Dispatch> dispatch, std::function<Result<T>()> work) {
  return suspendUntilCalled<T>([dispatch = std::move(dispatch), work = std::move(work)](auto completion) {
    auto run = [work, completion = std::move(completion)] {
      try {
        completion(work());
      } catch (const std::exception& error) {
        completion(tl::unexpected(OCRError::recognitionFailed(error.what())));
      }
    };
    if (!dispatch) return run();
    dispatch->asyncGlobal(std::move(run));
  });
}

}  // namespace pravik
