#pragma once

#include <exception>
#include <optional>
#include <string>

namespace pravik {

/// The text of an exception, whatever was thrown; that there is no memory in words.
std::string textOf(const std::exception_ptr& exception);

/// Calls what may throw anything; the text of what it threw, absent when it returned.
template <class Call>
std::optional<std::string> failureOf(const Call& call) {
  try {
    call();
    return std::nullopt;
  } catch (...) {
    return textOf(std::current_exception());
  }
}

/// Logs that a host's code threw this.
void logCallbackFailure(const std::string& text);

/// Calls into a host's code from a queue, where an exception would end the program: it is logged instead.
template <class Call>
void guardedCall(const Call& call) {
  if (const auto failure = failureOf(call)) logCallbackFailure(*failure);
}

}  // namespace pravik
