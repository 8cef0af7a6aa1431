#include "c/HandleLog.h"

#include <array>
#include <cstddef>
#include <utility>

namespace pravik {
namespace {

using Level = OCRLogger::Level;

/// Where what this thread logs goes; null for nowhere.
HandleLog*& currentLog() {
  thread_local HandleLog* log = nullptr;
  return log;
}

/// How many handles listen at each level.
class Listeners {
 public:
  Listeners() {
    // What goes to the sink alone, the dump of a reading, is heard nowhere.
    OCRLogger::setSink([](std::string_view) {});
    OCRLogger::setOnLog([](Level level, const std::string& line) {
      if (HandleLog* log = currentLog()) log->hear(level, line);
    });
  }

  void change(Level from, Level to) {
    const std::scoped_lock lock(mutex_);
    --counts_[static_cast<std::size_t>(from)];
    ++counts_[static_cast<std::size_t>(to)];
    std::size_t mostDetailed = counts_.size() - 1;
    while (mostDetailed > 0 && counts_[mostDetailed] == 0) --mostDetailed;
    OCRLogger::setLevel(static_cast<Level>(mostDetailed));
  }

 private:
  std::mutex mutex_;
  /// That of the level none, which the search ends at, has no meaning.
  std::array<std::ptrdiff_t, 6> counts_{};
};

Listeners& listeners() {
  static Listeners instance;
  return instance;
}

}  // namespace

HandleLog::~HandleLog() {
  if (level_ != Level::none) listeners().change(level_, Level::none);
}

void HandleLog::send(Level level, pravik_log_function function, void* context) {
  // Built before anything changes, so that a lack of memory leaves all as it was.
  Listeners& all = listeners();
  const std::scoped_lock lock(mutex_);
  function_ = function;
  context_ = context;
  const Level previous = std::exchange(level_, function == nullptr ? Level::none : level);
  all.change(previous, level_);
}

void HandleLog::hear(Level level, const std::string& line) {
  const std::scoped_lock lock(mutex_);
  if (level > level_) return;
  // What the function does with other handles has scopes of its own.
  const LogScope nowhere(nullptr);
  function_(context_, static_cast<pravik_log_level>(level), line.c_str());
}

LogScope::LogScope(HandleLog* log) : outer_(std::exchange(currentLog(), log)) {}

LogScope::~LogScope() {
  currentLog() = outer_;
}

}  // namespace pravik
