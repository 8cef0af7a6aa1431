#include "Utils/GuardedCall.h"

#include <new>

#include "Utils/OCRLogger.h"

namespace pravik {

std::string textOf(const std::exception_ptr& exception) {
  try {
    std::rethrow_exception(exception);
  } catch (const std::bad_alloc&) {
    return "内存不足";
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "未知异常";
  }
}

void logCallbackFailure(const std::string& text) {
  OCRLogger::error([&] { return "回调抛出异常: " + text; });
}

}  // namespace pravik
