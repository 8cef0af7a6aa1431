#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>

#include "Records/Observation.h"

namespace pravik {

/// The library's log: off until a level is set. All members may be called from any thread.
///
/// A line reads "[Pravik] 14:03:07.512 [INFO]  [File.cpp:12] message" with the local time of day. A message is a
/// callable that returns the text; it is called only when its level is on.
class OCRLogger {
 public:
  /// From silent to the most detailed.
  enum class Level : std::uint8_t { none, error, warning, info, debug, verbose };

  /// Called with the message's level and the whole line, without a line end, after the line was printed.
  using Hook = std::function<void(Level, const std::string&)>;
  /// Takes a whole piece of log text, the line end included.
  using Sink = std::function<void(std::string_view)>;

  /// The most detailed level that is printed.
  static Level level() { return level_.load(std::memory_order_relaxed); }
  /// Prints one line that the log is on when it was off before.
  static void setLevel(Level level);

  static Hook onLog();
  static void setOnLog(Hook listener);
  /// Where the log goes; an absent sink is standard output.
  static void setSink(Sink target);

  /// The level with this number, 0 to 5; absent for any other.
  static std::optional<Level> levelFromRawValue(int rawValue);
  /// The level's name in the code, such as "debug".
  static std::string_view caseName(Level level);
  /// Every level by its name.
  static std::map<std::string, Level> levelsByName();

  template <std::invocable Message>
  static void error(const Message& message, std::source_location location = std::source_location::current()) {
    log(Level::error, message, location.file_name(), location.line());
  }
  template <std::invocable Message>
  static void warning(const Message& message, std::source_location location = std::source_location::current()) {
    log(Level::warning, message, location.file_name(), location.line());
  }
  template <std::invocable Message>
  static void info(const Message& message, std::source_location location = std::source_location::current()) {
    log(Level::info, message, location.file_name(), location.line());
  }
  template <std::invocable Message>
  static void debug(const Message& message, std::source_location location = std::source_location::current()) {
    log(Level::debug, message, location.file_name(), location.line());
  }
  template <std::invocable Message>
  static void verbose(const Message& message, std::source_location location = std::source_location::current()) {
    log(Level::verbose, message, location.file_name(), location.line());
  }

  /// Only the last component of `file` is printed.
  template <std::invocable Message>
  static void log(Level level, const Message& message, std::string_view file, std::uint_least32_t line) {
    if (level != Level::none && level <= OCRLogger::level()) print(level, message(), file, line);
  }

  /// Prints the blocks of a reading line by line, as one piece and past the hook, at the levels debug and verbose.
  static void dumpObservations(const Observations& observations, std::string_view label);

 private:
  static void print(Level level, std::string_view message, std::string_view file, std::uint_least32_t line);

  static inline std::atomic<Level> level_{Level::none};
};

}  // namespace pravik
