#pragma once

#include <exception>
#include <string>

#include "Utils/OCRLogger.h"

namespace pravik {

/// Calls into a host's code from a queue, where an exception would end the program: it is logged instead.
template <class Call>
void guardedCall(const Call& call) {
  try {
    call();
  } catch (const std::exception& error) {
    OCRLogger::error([&] { return std::string("回调抛出异常: ") + error.what(); });
  } catch (...) {
    OCRLogger::error([] { return std::string("回调抛出异常"); });
  }
}

}  // namespace pravik
