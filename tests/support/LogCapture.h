#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "Utils/OCRLogger.h"

namespace pravik::test {

/// Collects the log instead of printing it, and leaves the logger silent when it goes.
class LogCapture {
 public:
  explicit LogCapture(OCRLogger::Level level) {
    OCRLogger::setSink([this](std::string_view text) { printed.emplace_back(text); });
    OCRLogger::setOnLog([this](OCRLogger::Level hookLevel, const std::string& line) {
      levels.push_back(hookLevel);
      lines.push_back(line);
    });
    OCRLogger::setLevel(level);
    clear();
  }
  ~LogCapture() {
    OCRLogger::setLevel(OCRLogger::Level::none);
    OCRLogger::setOnLog({});
    OCRLogger::setSink({});
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  void clear() {
    printed.clear();
    levels.clear();
    lines.clear();
  }

  /// How many lines end like this.
  auto count(std::string_view end) const {
    return std::ranges::count_if(lines, [&](const std::string& line) { return line.ends_with(end); });
  }

  /// Each piece that was written to the sink.
  std::vector<std::string> printed;
  /// What the hook was called with.
  std::vector<OCRLogger::Level> levels;
  std::vector<std::string> lines;
};

}  // namespace pravik::test
