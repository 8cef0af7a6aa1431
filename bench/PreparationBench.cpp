#include <benchmark/benchmark.h>

#include <memory>

#include "Core/ImagePreprocessor.h"
#include "backends/opencv/OpenCvImageRenderer.h"
#include "backends/opencv/finder/OpenCvRectangleDetector.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

ImagePreprocessor preprocessor() {
  return {std::make_shared<OpenCvImageRenderer>(), std::make_shared<OpenCvRectangleDetector>()};
}

void analyse(benchmark::State& state) {
  const Bitmap photo = photoOfMegapixels(static_cast<int>(state.range(0)));
  const ImagePreprocessor preparation = preprocessor();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(preparation.analyzeImage(photo));
}
BENCHMARK(analyse)->Name("prepare/analyse/megapixels")->Arg(2)->Arg(4)->Arg(8)->Arg(12)->Unit(benchmark::kMillisecond);

void analyseAndEnhance(benchmark::State& state) {
  const Image photo{.bitmap = photoOfMegapixels(static_cast<int>(state.range(0)))};
  const ImagePreprocessor preparation = preprocessor();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(preparation.preprocessForIDCard(photo));
}
BENCHMARK(analyseAndEnhance)
    ->Name("prepare/analyse-and-enhance/megapixels")
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void correctPerspective(benchmark::State& state) {
  const Bitmap photo = photoOfMegapixels(static_cast<int>(state.range(0)));
  const double width = photo.width();
  const double height = photo.height();
  const ImageFilter filters[] = {PerspectiveCorrection{{{0.15 * width, 0.8 * height},
                                                        {0.8 * width, 0.85 * height},
                                                        {0.2 * width, 0.15 * height},
                                                        {0.85 * width, 0.2 * height}}}};
  const OpenCvImageRenderer renderer;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(renderer.render(photo, filters));
}
BENCHMARK(correctPerspective)
    ->Name("prepare/correct-perspective/megapixels")
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void detectRectangle(benchmark::State& state) {
  const Bitmap photo = photoOfMegapixels(static_cast<int>(state.range(0)));
  const RectangleRequest request{5, 0.3F, 1.0F, 45, 0.3F, 0.5F};
  const OpenCvRectangleDetector detector;
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(detector.detect(photo, request));
}
BENCHMARK(detectRectangle)
    ->Name("prepare/detect-rectangle/megapixels")
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace pravik::bench
