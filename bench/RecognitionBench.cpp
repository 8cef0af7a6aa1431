#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "Pravik.h"
#include "backends/DefaultPlatform.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

/// What a caller waits for: straightening, enhancing, reading and parsing a photo that is in memory already.
void recognizePortraitSide(benchmark::State& state, ImageOrientation turn) {
  const Image photo{.bitmap = uprightBitmap(photoOfSize(1600, 1200), turn)};
  const PravikSDK sdk(makeDefaultPlatform({.modelDirectory = PRAVIK_MODEL_DIRECTORY}));
  if (!syncWait(sdk.recognizeIDCardFront(photo))) return state.SkipWithError("the sample was not recognised");
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(syncWait(sdk.recognizeIDCardFront(photo)));
}
BENCHMARK_CAPTURE(recognizePortraitSide, upright, ImageOrientation::up)
    ->Name("recognise/portrait-side/1600x1200")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();
/// The same photo on its side, which is read twice.
BENCHMARK_CAPTURE(recognizePortraitSide, turned, ImageOrientation::right)
    ->Name("recognise/portrait-side/turned")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

/// Reads everything, keeps every row of digits to itself and reads another number at every look, so that no stage finds
/// one.
class NumberBlindEngine final : public TextEngine {
 public:
  explicit NumberBlindEngine(std::shared_ptr<const TextEngine> engine) : engine_(std::move(engine)) {}

  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const override {
    std::vector<RecognizedText> blocks = engine_->recognize(bitmap, request);
    std::erase_if(blocks, [](const RecognizedText& block) {
      return std::ranges::count_if(block.topCandidate->text, [](char c) { return '0' <= c && c <= '9'; }) >= 4;
    });
    return blocks;
  }

  bool readsDigits() const override { return true; }
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader reader,
                                     const WorkLimit& limit) const override {
    std::vector<SeenDigits> looks = engine_->readDigits(rows, reader, limit);
    for (std::size_t look = 0; look < looks.size(); ++look)
      for (SeenDigit& digit : looks[look])
        std::ranges::rotate(digit.probabilities, digit.probabilities.begin() + static_cast<std::ptrdiff_t>(look % 10));
    return looks;
  }

 private:
  std::shared_ptr<const TextEngine> engine_;
};

/// The first of these photos when its kind is not told, and there may be several cards.
void recognizeCards(benchmark::State& state) {
  const Image photo{.bitmap = photoOfSize(1600, 1200)};
  const PravikSDK sdk(makeDefaultPlatform({.modelDirectory = PRAVIK_MODEL_DIRECTORY}));
  if (syncWait(sdk.recognizeCards(photo))->cards.size() != 1) return state.SkipWithError("one card was not found");
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(syncWait(sdk.recognizeCards(photo)));
}
BENCHMARK(recognizeCards)
    ->Name("recognise/cards/1600x1200")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

void recognizeBankCard(benchmark::State& state) {
  const Image photo{.bitmap = bankCardPhoto()};
  const PravikSDK sdk(makeDefaultPlatform({.modelDirectory = PRAVIK_MODEL_DIRECTORY}));
  const auto reading = syncWait(sdk.read(photo, OCRScanMode::bankCard));
  if (!reading || reading->report.stage != BankCardStage::firstReading) return state.SkipWithError("not read at once");
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(syncWait(sdk.recognizeBankCard(photo)));
}
BENCHMARK(recognizeBankCard)
    ->Name("recognise/bank-card/read-at-once")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

/// The worst case: every stage runs, and none finds a number.
void tryEveryStageOfABankCard(benchmark::State& state) {
  const Image photo{.bitmap = bankCardPhoto()};
  Platform platform = makeDefaultPlatform({.modelDirectory = PRAVIK_MODEL_DIRECTORY});
  platform.textEngine = std::make_shared<NumberBlindEngine>(platform.textEngine);
  const PravikSDK sdk(platform);
  if (syncWait(sdk.recognizeBankCard(photo))) return state.SkipWithError("a number was found");
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(syncWait(sdk.recognizeBankCard(photo)));
}
BENCHMARK(tryEveryStageOfABankCard)
    ->Name("recognise/bank-card/every-stage")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

}  // namespace
}  // namespace pravik::bench
