#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "backends/onnxruntime/Cropping.h"
#include "backends/onnxruntime/DirectionClassifier.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/OnnxTextEngine.h"
#include "backends/onnxruntime/TextDetector.h"
#include "backends/opencv/Mat.h"
#include "bench/Pictures.h"

namespace pravik::bench {
namespace {

constexpr int allCores = 0;

std::string modelPath(const char* file) {
  return std::string(PRAVIK_MODEL_DIRECTORY) + "/" + file;
}

/// A picture of the size that phones hand over most, and the lines of text on it.
struct Photo {
  Bitmap bitmap = photoOfSize(1600, 1200);
  cv::Mat mat = asMat(bitmap);

  std::vector<cv::Mat> lines() const {
    const ppocr::TextDetector detector(modelPath(detectionModelFile), allCores);
    std::vector<cv::Mat> crops;
    for (const ppocr::TextBox& box : detector.detect(mat, RecognitionLevel::accurate))
      crops.push_back(ppocr::cropOf(mat, box));
    return crops;
  }
};

void detectText(benchmark::State& state) {
  const Photo photo;
  const ppocr::TextDetector detector(modelPath(detectionModelFile), allCores);
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(detector.detect(photo.mat, RecognitionLevel::accurate));
}
BENCHMARK(detectText)->Name("text/detection/1600x1200")->Unit(benchmark::kMillisecond)->UseRealTime();

void classifyDirections(benchmark::State& state) {
  const std::vector<cv::Mat> lines = Photo().lines();
  const ppocr::DirectionClassifier classifier(modelPath(directionModelFile), allCores);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(classifier.upsideDown(lines));
  state.counters["lines"] = static_cast<double>(lines.size());
}
BENCHMARK(classifyDirections)->Name("text/direction/1600x1200")->Unit(benchmark::kMillisecond)->UseRealTime();

void readLines(benchmark::State& state) {
  const std::vector<cv::Mat> lines = Photo().lines();
  const ppocr::LineReader reader(modelPath(recognitionModelFile), allCores);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(reader.read(lines, {}));
  state.counters["lines"] = static_cast<double>(lines.size());
}
BENCHMARK(readLines)->Name("text/recognition/1600x1200")->Unit(benchmark::kMillisecond)->UseRealTime();

/// The whole engine, second looks included; the argument is the size in megapixels.
void recognizeText(benchmark::State& state) {
  const Bitmap photo = photoOfMegapixels(static_cast<int>(state.range(0)));
  const OnnxTextEngine engine({.modelDirectory = PRAVIK_MODEL_DIRECTORY, .threadCount = allCores});
  engine.load();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(engine.recognize(photo, TextRequest{}));
}
BENCHMARK(recognizeText)
    ->Name("text/whole-engine/megapixels")
    ->Arg(2)
    ->Arg(4)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace pravik::bench
