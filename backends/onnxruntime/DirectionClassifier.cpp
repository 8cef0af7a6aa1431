#include "backends/onnxruntime/DirectionClassifier.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "backends/onnxruntime/LineBatch.h"

namespace pravik::ppocr {
namespace {

/// What the model was trained on.
constexpr int inputWidth = 192;
/// Lines that go through the model at once, and that judge for all lines of a picture.
constexpr std::size_t batchSize = 6;
/// Lines are turned from this average of the judges on: upright lines, tilted ones too, stay below 0.4 and others above
/// 0.65.
constexpr float turnThreshold = 0.5F;

double aspect(const cv::Mat& line) {
  return static_cast<double>(line.cols) / line.rows;
}

}  // namespace

DirectionClassifier::DirectionClassifier(const std::string& modelPath, int threadCount)
    : model_(modelPath, threadCount, 2) {}

bool DirectionClassifier::areUpsideDown(const std::vector<cv::Mat>& lines) const {
  if (lines.empty()) return false;
  std::vector<cv::Mat> longest = lines;
  std::ranges::stable_sort(longest, std::greater(), aspect);
  longest.resize(std::min(longest.size(), batchSize));
  const std::vector<float> votes = upsideDown(longest);
  return std::accumulate(votes.begin(), votes.end(), 0.F) > turnThreshold * static_cast<float>(votes.size());
}

std::vector<float> DirectionClassifier::upsideDown(std::span<const cv::Mat> lines) const {
  std::vector<float> probabilities;
  for (std::size_t begin = 0; begin < lines.size(); begin += batchSize) {
    const std::size_t count = std::min(batchSize, lines.size() - begin);
    const Tensor output = model_.run(lineBatch(lines.subspan(begin, count), inputWidth));
    for (std::size_t i = 0; i < count; ++i) probabilities.push_back(output.values.get()[2 * i + 1]);
  }
  return probabilities;
}

}  // namespace pravik::ppocr
