#include <benchmark/benchmark.h>

#include <memory>
#include <utility>

#include "UI/CardDetector.h"
#include "UI/FrameMonitor.h"
#include "UI/FrameQuality.h"
#include "backends/opencv/finder/OpenCvRectangleDetector.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

/// Drops what it is given: only the camera thread's work is measured.
class NoDispatch : public Dispatch {
 public:
  void async(std::function<void()> /*work*/) override {}
  WorkItem asyncAfter(std::chrono::milliseconds /*delay*/, std::function<void()> /*work*/) override { return {}; }
  void asyncGlobal(std::function<void()> /*work*/) override {}
  std::shared_ptr<SerialQueue> makeSerialQueue(const std::string& /*label*/) override { return nullptr; }
};

std::shared_ptr<CardDetector> cardDetector() {
  return std::make_shared<CardDetector>(std::make_shared<OpenCvRectangleDetector>(), std::make_shared<NoDispatch>());
}

VideoFrame frameOfSize(const benchmark::State& state) {
  return {photoOfSize(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)))};
}

void measureFrame(benchmark::State& state) {
  const VideoFrame frame = frameOfSize(state);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(FrameQuality::analyze(frame));
}
BENCHMARK(measureFrame)
    ->Name("scanner/frame-quality/pixels")
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);

void findOutline(benchmark::State& state) {
  const VideoFrame frame = frameOfSize(state);
  const auto detector = cardDetector();
  detector->frameSkipInterval = 1;
  for ([[maybe_unused]] auto _ : state) detector->processFrame(frame);
}
BENCHMARK(findOutline)
    ->Name("scanner/outline/pixels")
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// A second of video at 30 frames: the detector on every 3rd frame, the quality on every 10th.
void followVideo(benchmark::State& state) {
  const VideoFrame frame = frameOfSize(state);
  FrameMonitor monitor(cardDetector());
  for ([[maybe_unused]] auto _ : state)
    for (int i = 0; i < 30; ++i) benchmark::DoNotOptimize(monitor.process(frame));
}
BENCHMARK(followVideo)
    ->Name("scanner/second-of-video/pixels")
    ->Args({1280, 720})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace pravik::bench
