#include <benchmark/benchmark.h>

#include <array>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "Parsers/BINHints.h"
#include "Parsers/BankCardParser.h"
#include "Parsers/CardNumberFusion.h"
#include "Parsers/CardText.h"
#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"
#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "Records/OCRError.h"
#include "Utils/RegexHelper.h"

// How the time to read a text grows with its size when the text was made to take long. A row gives the time of the
// text that takes the longest, and names it.
namespace pravik::bench {
namespace {

/// Each is repeated to the size asked for.
constexpr std::array<std::string_view, 22> units{"1",
                                                 " ",
                                                 "1 ",
                                                 "1 2-3 -4. 5/",
                                                 "12345678 ",
                                                 "20150301-",
                                                 "6222021234567895 ",
                                                 "6222 0212 3456 7895 ",
                                                 "62220212345678942",
                                                 "6222 ",
                                                 "O",
                                                 "1B",
                                                 "姓名",
                                                 "姓、",
                                                 "住 址",
                                                 "公民身份号码",
                                                 "签发机关",
                                                 "有效期限长期",
                                                 "中国银",
                                                 "MA YUNFEI BANK ",
                                                 "\xCC\x81",
                                                 "\xFF"};
/// A short block is not below this, and a whole unit.
constexpr std::size_t shortBlockBytes = 4;

/// How a text is laid out on the picture.
enum class Layout : std::uint8_t { oneBlock, oneRow, rows };

std::string repeated(std::string_view unit, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += unit;
  return text;
}

Observations page(std::string_view unit, Layout layout, std::size_t bytes) {
  constexpr double rowHeight = 0.05;
  if (layout == Layout::oneBlock) return {{repeated(unit, bytes), 0.9F, {0, 0, 1, rowHeight}}};
  Observations blocks;
  for (std::size_t filled = 0; filled < bytes; filled += blocks.back().text.size()) {
    const auto number = static_cast<double>(blocks.size());
    const Rect box = layout == Layout::oneRow ? Rect{number, 0, 1, rowHeight} : Rect{0, -number * rowHeight, 1, 0};
    blocks.push_back({repeated(unit, shortBlockBytes), 0.9F, box});
  }
  return blocks;
}

template <class Parser>
void parse(const Observations& page) {
  benchmark::DoNotOptimize(Parser{}.parse(page));
}

void fuse(const Observations& page) {
  const std::vector<std::string> fragments = extractCardNumberFragments(page);
  const std::vector<std::string> hints = extractBINHints(bankCardRows(page));
  benchmark::DoNotOptimize(fuseCardNumber(fragments, hints, fusedCardNumberLength));
}

void correct(const Observations& page) {
  benchmark::DoNotOptimize(postCorrected(page, SceneType::idCard));
}

void validate(const Observations& page) {
  try {
    validateScene(page, SceneType::idCard);
  } catch (const OCRError& error) {
    benchmark::DoNotOptimize(error);
  }
}

/// Of the processor, so that what else the machine does counts little.
double secondsOf(const auto& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void reportPerKilobyte(benchmark::State& state, double seconds) {
  state.SetIterationTime(seconds);
  state.counters["us/kB"] = seconds * 1e6 / static_cast<double>(state.range(0));
}

void readHostilePage(benchmark::State& state, void (*read)(const Observations&), Layout layout) {
  while (state.KeepRunning()) {
    double longest = 0;
    for (const std::string_view unit : units) {
      const Observations blocks = page(unit, layout, static_cast<std::size_t>(state.range(0)) * 1000);
      const double seconds = secondsOf([&] { read(blocks); });
      if (seconds <= longest) continue;
      longest = seconds;
      state.SetLabel(std::string(unit));
    }
    reportPerKilobyte(state, longest);
  }
}

/// Patterns that try every way to divide a run before they give up; none of the library's is one.
void searchWithBadPattern(benchmark::State& state, std::string_view pattern) {
  const std::string text = repeated("a", static_cast<std::size_t>(state.range(0)) * 1000);
  while (state.KeepRunning())
    reportPerKilobyte(state, secondsOf([&] { benchmark::DoNotOptimize(RegexHelper::allMatches(pattern, text)); }));
}

void inFourSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->RangeMultiplier(10)->Range(1, 1000)->ArgName("kB");
  benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
}

[[maybe_unused]] const bool registered = [] {
  struct Reader {
    std::string name;
    void (*read)(const Observations&);
  };
  const std::vector<Reader> readers{{"portrait-side", parse<IDCardFrontParser>},
                                    {"emblem-side", parse<IDCardBackParser>},
                                    {"bank-card", parse<BankCardParser>},
                                    {"fusion", fuse},
                                    {"post-correction", correct},
                                    {"scene", validate}};
  const std::vector<std::pair<std::string, Layout>> layouts{
      {"one-block", Layout::oneBlock}, {"one-row", Layout::oneRow}, {"rows", Layout::rows}};
  for (const Reader& reader : readers)
    for (const auto& [name, layout] : layouts)
      inFourSizes(benchmark::RegisterBenchmark(("hostile/" + reader.name + "/" + name).c_str(), readHostilePage,
                                               reader.read, layout));
  for (const std::string_view pattern : {"(a+)+b", "(a|a)*b", "(?:a{1,9}){1,9}b", "a*a*a*b"})
    inFourSizes(
        benchmark::RegisterBenchmark(("hostile/regex/" + std::string(pattern)).c_str(), searchWithBadPattern, pattern));
  return true;
}();

}  // namespace
}  // namespace pravik::bench
