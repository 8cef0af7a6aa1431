#include "Utils/OCRLogger.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <utility>

#include "Records/PravikVersion.h"
#include "Utils/Format.h"
#include "Utils/GuardedCall.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

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

/// Never destroyed: a recognition may still be logging while the program ends.
Replaceable<OCRLogger::Hook>& hook() {
  static auto& instance = *new Replaceable<OCRLogger::Hook>;
  return instance;
}

Replaceable<OCRLogger::Sink>& sink() {
  static auto& instance = *new Replaceable<OCRLogger::Sink>;
  return instance;
}

/// What a host's own hook or sink throws must not cost the work that logs, and cannot be logged either.
template <class Callable, class... Arguments>
bool tell(const Callable& callable, const Arguments&... arguments) {
  if (!callable) return false;
  static_cast<void>(failureOf([&] { callable(arguments...); }));
  return true;
}

/// Writes in one piece, so that the lines of several threads do not mix, and at once, so that a crash loses none.
void write(const std::string& textWithLineEnd) {
  if (tell(*sink().get(), textWithLineEnd)) return;
  std::fwrite(textWithLineEnd.data(), 1, textWithLineEnd.size(), stdout);
  std::fflush(stdout);
}

void emit(OCRLogger::Level level, const std::string& line) {
  write(line + "\n");
  tell(*hook().get(), level, line);
}

/// The local time of day, "14:03:07.512".
std::string timestamp() {
  const auto now = std::chrono::system_clock::now();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  ::localtime_r(&seconds, &local);
  return formatted("{:02}:{:02}:{:02}.{:03}", local.tm_hour, local.tm_min, local.tm_sec, milliseconds.count());
}

}  // namespace

void OCRLogger::setLevel(Level level) {
  const Level previous = level_.exchange(level);
  if (previous != Level::none || level == Level::none) return;
  emit(Level::info,
       formatted("[Pravik] {} Pravik v{} 日志已启用（level={}）", tags[static_cast<std::size_t>(Level::info)],
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

std::map<std::string, OCRLogger::Level> OCRLogger::levelsByName() {
  std::map<std::string, Level> levels;
  for (std::size_t i = 0; i < caseNames.size(); ++i) levels.emplace(caseNames[i], static_cast<Level>(i));
  return levels;
}

void OCRLogger::print(Level level, std::string_view message, std::string_view file, std::uint_least32_t line) {
  emit(level, formatted("[Pravik] {} {} [{}:{}] {}", timestamp(), tags[static_cast<std::size_t>(level)],
                        file.substr(file.rfind('/') + 1), line, message));
}

void OCRLogger::dumpObservations(const Observations& observations, std::string_view label) {
  if (level() < Level::debug) return;
  const std::vector<Observations> lines = groupedByLine(observations, textLineThreshold);
  std::string dump = formatted("========== {} ==========\n共 {} 个文本块, {} 行\n---------- 按行输出 ----------\n",
                               label, observations.size(), lines.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::vector<std::string> texts;
    for (const auto& block : lines[i]) texts.push_back(block.text);
    dump += formatted("  行{}: [y={:.3f}] {}\n", i, topOriginMidY(lines[i].front()), joined(texts, " | "));
  }
  dump += formatted("---------- 原始文本 ----------\n{}\n==============================\n",
                    joinedText(observations, textLineThreshold));
  write(dump);
}

}  // namespace pravik
