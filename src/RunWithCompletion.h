#pragma once

#include <asio/co_spawn.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "OCRError.h"
#include "Platform/Dispatch.h"
#include "Platform/DispatchExecutor.h"
#include "Task.h"

namespace pravik {

/// Runs a task on the pool and hands its end to `completion` on the main queue; without a dispatch both at once.
/// An exception other than OCRError becomes recognitionFailed with its text.
template <class Info>
void runWithCompletion(const std::shared_ptr<Dispatch>& dispatch, Task<Info> task,
                       std::function<void(Result<Info>)> completion) {
  if (!dispatch) return completion(syncWait(std::move(task)));
  asio::co_spawn(DispatchExecutor(dispatch), std::move(task),
                 [dispatch, completion = std::move(completion)](const std::exception_ptr& failure, Info info) {
                   Result<Info> result = std::move(info);
                   try {
                     if (failure) std::rethrow_exception(failure);
                   } catch (const OCRError& error) {
                     result = tl::unexpected(error);
                   } catch (const std::exception& error) {
                     result = tl::unexpected(OCRError::recognitionFailed(error.what()));
                   }
                   dispatch->async([completion, result = std::move(result)] { completion(result); });
                 });
}

}  // namespace pravik
