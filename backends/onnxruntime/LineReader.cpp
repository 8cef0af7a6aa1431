#include "backends/onnxruntime/LineReader.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>
#include <string_view>

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

/// What the recogniser calls a digit on a card: the embossed ones have strokes that look like letters.
constexpr std::array<std::array<std::string_view, 7>, 10> looksLikeDigit{{
    {"0", "O", "o", "D", "Q", "〇", "○"},
    {"1", "l", "I", "|", "i", "丨"},
    {"2", "Z", "z"},
    {"3"},
    {"4"},
    {"5", "S", "s"},
    {"6", "b"},
    {"7"},
    {"8", "B"},
    {"9", "q", "g"},
}};

DigitClasses digitClasses(const KeyList& keys) {
  DigitClasses classes;
  for (std::size_t digit = 0; digit < classes.size(); ++digit) {
    std::vector<std::string_view> texts(looksLikeDigit[digit].begin(), looksLikeDigit[digit].end());
    std::erase(texts, "");
    classes[digit] = keys.labelsOf(texts);
  }
  return classes;
}

int paddedWidth(const cv::Mat& line) {
  const int width = (scaledWidth(line) + widthStep - 1) / widthStep * widthStep;
  return std::clamp(width, minimumWidth, maximumWidth);
}

}  // namespace

LineReader::LineReader(const std::string& modelPath, int threadCount)
    : model_(modelPath, threadCount, 3), keys_(model_.metadata("character")), digits_(digitClasses(keys_)) {
  const auto classes = model_.outputShape().back();
  if (classes != keys_.size())
    throw std::runtime_error("the model file " + modelPath + " has " + std::to_string(classes) +
                             " classes but names characters for " + std::to_string(keys_.size()));
}

TextCandidate LineReader::candidate(std::span<const float> probabilities) const {
  const auto characters = decodeCtc(probabilities, keys_.size());
  if (characters.empty()) return {};
  const float sum = std::accumulate(characters.begin(), characters.end(), 0.F,
                                    [](float total, const CtcCharacter& c) { return total + c.probability; });
  return {readingText(characters, keys_), sum / static_cast<float>(characters.size())};
}

void LineReader::run(const std::vector<cv::Mat>& lines, const WorkLimit& limit, const Take& take) const {
  std::vector<std::size_t> order(lines.size());
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return scaledWidth(lines[i]); });

  for (auto next = order.begin(); next != order.end() && !limit.isSpent();) {
    const int width = paddedWidth(lines[*next]);
    const auto room = std::max(1, maximumBatchColumns / width);
    auto end = next;
    std::vector<cv::Mat> batch;
    while (end != order.end() && std::ssize(batch) < room && paddedWidth(lines[*end]) == width)
      batch.push_back(lines[*end++]);
    const Tensor output = model_.run(lineBatch(batch, width));
    const auto steps = static_cast<std::size_t>(output.shape[1]);
    const std::size_t length = steps * static_cast<std::size_t>(keys_.size());
    const float* probabilities = output.values.get();
    for (; next != end; ++next, probabilities += length) {
      const double used = std::min(1.0, static_cast<double>(scaledWidth(lines[*next])) / width);
      take(*next, {probabilities, length}, used * static_cast<double>(steps));
    }
  }
}

std::vector<TextCandidate> LineReader::read(const std::vector<cv::Mat>& lines, const WorkLimit& limit) const {
  std::vector<TextCandidate> readings(lines.size());
  run(lines, limit, [&](std::size_t line, std::span<const float> probabilities, double /*usedSteps*/) {
    readings[line] = candidate(probabilities);
  });
  return readings;
}

std::vector<SeenDigits> LineReader::readDigits(const std::vector<cv::Mat>& rows, const WorkLimit& limit) const {
  std::vector<SeenDigits> seen(rows.size());
  run(rows, limit, [&](std::size_t row, std::span<const float> probabilities, double usedSteps) {
    seen[row] = decodeDigits(probabilities, keys_.size(), digits_, usedSteps);
  });
  return seen;
}

}  // namespace pravik::ppocr
