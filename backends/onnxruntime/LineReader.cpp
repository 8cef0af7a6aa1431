#include "backends/onnxruntime/LineReader.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "backends/onnxruntime/CtcDecoder.h"
#include "backends/onnxruntime/LineBatch.h"
#include "backends/onnxruntime/ReadingText.h"

namespace pravik::ppocr {
namespace {

/// Widths are rounded up to a multiple of this, so that lines of about the same length share a run.
constexpr int widthStep = 64;
/// Short lines are padded to this width. The model was trained on 320, but reads them as well with less.
constexpr int minimumWidth = 160;
/// A longer line is squeezed.
constexpr int maximumWidth = 2560;
/// Columns of input that go through the model at once: bounds the memory of a run.
constexpr int maximumBatchColumns = 2560;

int paddedWidth(const cv::Mat& line) {
  const int width = (scaledWidth(line) + widthStep - 1) / widthStep * widthStep;
  return std::clamp(width, minimumWidth, maximumWidth);
}

}  // namespace

LineReader::LineReader(const std::string& modelPath, int threadCount)
    : model_(modelPath, threadCount, 3), keys_(model_.metadata("character")) {
  const auto classes = model_.outputShape().back();
  if (classes != keys_.size())
    throw std::runtime_error("the model file " + modelPath + " has " + std::to_string(classes) +
                             " classes but names characters for " + std::to_string(keys_.size()));
}

TextCandidate LineReader::candidate(const float* probabilities, std::size_t steps) const {
  const auto characters = decodeCtc({probabilities, steps * static_cast<std::size_t>(keys_.size())}, keys_.size());
  if (characters.empty()) return {};
  const float sum = std::accumulate(characters.begin(), characters.end(), 0.F,
                                    [](float total, const CtcCharacter& c) { return total + c.probability; });
  return {readingText(characters, keys_), sum / static_cast<float>(characters.size())};
}

std::vector<TextCandidate> LineReader::read(const std::vector<cv::Mat>& lines, const WorkLimit& limit) const {
  std::vector<std::size_t> order(lines.size());
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return scaledWidth(lines[i]); });

  std::vector<TextCandidate> readings(lines.size());
  for (auto next = order.begin(); next != order.end() && !limit.isSpent();) {
    const int width = paddedWidth(lines[*next]);
    const auto room = std::max(1, maximumBatchColumns / width);
    auto end = next;
    std::vector<cv::Mat> batch;
    while (end != order.end() && std::ssize(batch) < room && paddedWidth(lines[*end]) == width)
      batch.push_back(lines[*end++]);
    const Tensor output = model_.run(lineBatch(batch, width));
    const auto steps = static_cast<std::size_t>(output.shape[1]);
    const float* probabilities = output.values.get();
    for (; next != end; ++next, probabilities += steps * static_cast<std::size_t>(keys_.size()))
      readings[*next] = candidate(probabilities, steps);
  }
  return readings;
}

}  // namespace pravik::ppocr
