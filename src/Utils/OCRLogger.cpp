#include "Utils/OCRLogger.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

#include "PravikVersion.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

/// Blocks whose vertical centres are closer than this share a line of the dump.
constexpr double dumpLineThreshold = 0.025;

constexpr std::array<std::string_view, 6> caseNames{"none", "error", "warning", "info", "debug", "verbose"};
/// As wide as each other, so that messages line up.
constexpr std::array<std::string_view, 6> tags{"", "[ERROR]", "[WARN] ", "[INFO] ", "[DEBUG]", "[VERB] "};

/// A callable that one thread may replace while others call it.
template <class Callable>
class Replaceable {
 public:
  void set(Callable callable) {
    auto shared = std::make_shared<const Callable>(std::move(callable));
    const std::scoped_lock lock(mutex_);
    callable_.swap(shared);
  }

  std::shared_ptr<const Callable> get() const {
    const std::scoped_lock lock(mutex_);
    return callable_;
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<const Callable> callable_ = std::make_shared<const Callable>();
};

Replaceable<OCRLogger::Hook>& hook() {
  static Replaceable<OCRLogger::Hook> instance;
  return instance;
}

Replaceable<OCRLogger::Sink>& sink() {
  static Replaceable<OCRLogger::Sink> instance;
  return instance;
}

/// Writes in one piece, so that the lines of several threads do not mix, and at once, so that a crash loses none.
void write(const std::string& textWithLineEnd) {
  const auto target = sink().get();
  if (*target) {
    (*target)(textWithLineEnd);
    return;
  }
  std::fwrite(textWithLineEnd.data(), 1, textWithLineEnd.size(), stdout);
  std::fflush(stdout);
}

void emit(OCRLogger::Level level, const std::string& line) {
  write(line + "\n");
  const auto listener = hook().get();
  if (*listener) (*listener)(level, line);
}

/// The local time of day, "14:03:07.512".
std::string timestamp() {
  const auto now = std::chrono::system_clock::now();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
  return fmt::format("{:%H:%M:%S}.{:03}", fmt::localtime(std::chrono::system_clock::to_time_t(now)),
                     milliseconds.count());
}

}  // namespace

void OCRLogger::setLevel(Level level) {
  const Level previous = level_.exchange(level);
  if (previous != Level::none || level == Level::none) return;
  emit(Level::info,
       fmt::format("[Pravik] {} Pravik v{} 日志已启用（level={}）", tags[static_cast<std::size_t>(Level::info)],
                   PravikVersion::fullDescription(), caseName(level)));
}

OCRLogger::Hook OCRLogger::onLog() {
  return *hook().get();
}

void OCRLogger::setOnLog(Hook listener) {
  hook().set(std::move(listener));
}

void OCRLogger::setSink(Sink target) {
  sink().set(std::move(target));
}

std::optional<OCRLogger::Level> OCRLogger::levelFromRawValue(int rawValue) {
  if (rawValue < static_cast<int>(Level::none) || rawValue > static_cast<int>(Level::verbose)) return std::nullopt;
  return static_cast<Level>(rawValue);
}

std::string_view OCRLogger::caseName(Level level) {
  return caseNames[static_cast<std::size_t>(level)];
}

void OCRLogger::print(Level level, std::string_view message, std::string_view file, std::uint_least32_t line) {
  emit(level, fmt::format("[Pravik] {} {} [{}:{}] {}", timestamp(), tags[static_cast<std::size_t>(level)],
                          file.substr(file.rfind('/') + 1), line, message));
}

void OCRLogger::dumpObservations(const Observations& observations, std::string_view label) {
  if (level() < Level::debug) return;
  const std::vector<Observations> lines = groupedByLine(observations, dumpLineThreshold);
  std::string dump = fmt::format("========== {} ==========\n共 {} 个文本块, {} 行\n---------- 按行输出 ----------\n",
                                 label, observations.size(), lines.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::vector<std::string> texts;
    for (const auto& block : lines[i]) texts.push_back(block.text);
    dump += fmt::format("  行{}: [y={:.3f}] {}\n", i, topOriginMidY(lines[i].front()), joined(texts, " | "));
  }
  dump += fmt::format("---------- 原始文本 ----------\n{}\n==============================\n",
                      joinedText(observations, dumpLineThreshold));
  write(dump);
}

}  // namespace pravik
