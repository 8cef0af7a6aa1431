#include <benchmark/benchmark.h>

#include "UI/FrameQuality.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

void measureFrame(benchmark::State& state) {
  const VideoFrame frame{photoOfSize(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)))};
  for (auto _ : state) benchmark::DoNotOptimize(FrameQuality::analyze(frame));
}
BENCHMARK(measureFrame)
    ->Name("scanner/frame-quality/pixels")
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace pravik::bench
