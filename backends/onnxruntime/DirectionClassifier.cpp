#include "backends/onnxruntime/DirectionClassifier.h"

#include <algorithm>

#include "backends/onnxruntime/LineBatch.h"

namespace pravik::ppocr {
namespace {

/// What the model was trained on.
constexpr int inputWidth = 192;
/// Lines that go through the model at once.
constexpr std::size_t batchSize = 8;

}  // namespace

DirectionClassifier::DirectionClassifier(const std::string& modelPath, int threadCount)
    : model_(modelPath, threadCount, 2) {}

std::vector<float> DirectionClassifier::upsideDown(const std::vector<cv::Mat>& lines) const {
  std::vector<float> probabilities;
  for (std::size_t begin = 0; begin < lines.size(); begin += batchSize) {
    const std::size_t count = std::min(batchSize, lines.size() - begin);
    const Tensor output = model_.run(lineBatch({lines.data() + begin, count}, inputWidth));
    for (std::size_t i = 0; i < count; ++i) probabilities.push_back(output.values.get()[2 * i + 1]);
  }
  return probabilities;
}

}  // namespace pravik::ppocr
