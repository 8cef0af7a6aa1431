#include <benchmark/benchmark.h>

#include "Pravik.h"
#include "backends/DefaultPlatform.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

/// What a caller waits for: straightening, enhancing, reading and parsing a photo that is in memory already.
void recognizePortraitSide(benchmark::State& state) {
  const Image photo{.bitmap = photoOfSize(1600, 1200)};
  const PravikSDK sdk(makeDefaultPlatform({.modelDirectory = PRAVIK_MODEL_DIRECTORY}));
  if (!syncWait(sdk.recognizeIDCardFront(photo))) return state.SkipWithError("the sample was not recognised");
  for (auto _ : state) benchmark::DoNotOptimize(syncWait(sdk.recognizeIDCardFront(photo)));
}
BENCHMARK(recognizePortraitSide)
    ->Name("recognise/portrait-side/1600x1200")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

}  // namespace
}  // namespace pravik::bench
