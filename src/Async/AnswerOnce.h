#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include "Records/OCRError.h"
#include "Utils/GuardedCall.h"

namespace pravik {

/// The one answer to a call, given on any thread: the first counts and later ones are ignored. Gone without an answer,
/// it has answered `cancelled`. What the completion throws is logged.
template <class T>
class AnswerOnce {
 public:
  explicit AnswerOnce(std::function<void(Result<T>)> completion) : completion_(std::move(completion)) {}
  ~AnswerOnce() { give(tl::unexpected(OCRError::cancelled())); }
  AnswerOnce(const AnswerOnce&) = delete;
  AnswerOnce& operator=(const AnswerOnce&) = delete;

  void give(Result<T> result) {
    if (given_.exchange(true)) return;
    const auto completion = std::move(completion_);
    guardedCall([&] { completion(std::move(result)); });
  }

 private:
  std::function<void(Result<T>)> completion_;
  std::atomic<bool> given_ = false;
};

}  // namespace pravik
