#pragma once

#include <mutex>
#include <string>

#include "Utils/OCRLogger.h"
#include "c/pravik_c.h"

namespace pravik {

/// Where the log of one handle goes; at first nowhere. The library has one log for the whole process: each thread
/// tells through a LogScope whose work it does, and the log's level is the most detailed that any handle wants.
class HandleLog {
 public:
  HandleLog() = default;
  ~HandleLog();
  HandleLog(const HandleLog&) = delete;
  HandleLog& operator=(const HandleLog&) = delete;

  /// Replaces what went before, which is not called any more once this returns. Without a function nothing is heard.
  void send(OCRLogger::Level level, pravik_log_function function, void* context);
  /// Hands a line on when its level is wanted.
  void hear(OCRLogger::Level level, const std::string& line);

 private:
  std::mutex mutex_;
  OCRLogger::Level level_ = OCRLogger::Level::none;
  pravik_log_function function_ = nullptr;
  void* context_ = nullptr;
};

/// As long as it lives, what its thread logs goes to a handle's log, or nowhere for null.
class LogScope {
 public:
  explicit LogScope(HandleLog* log);
  ~LogScope();
  LogScope(const LogScope&) = delete;
  LogScope& operator=(const LogScope&) = delete;

 private:
  HandleLog* outer_;
};

}  // namespace pravik
