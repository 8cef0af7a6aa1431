#pragma once

#include <functional>
#include <opencv2/core/mat.hpp>
#include <span>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/CtcDecoder.h"
#include "backends/onnxruntime/KeyList.h"
#include "backends/onnxruntime/Model.h"

namespace pravik::ppocr {

/// Reads straightened lines of text with the recognition model.
class LineReader {
 public:
  /// Throws std::runtime_error as Model does, and when the file does not name a character for every class.
  LineReader(const std::string& modelPath, int threadCount);

  /// The readings of lines (BGR), in the same order; an unreadable line has an empty text. Confidence is the mean of
  /// the characters' probabilities. When the limit is spent, what is left is as good as unreadable.
  std::vector<TextCandidate> read(const std::vector<cv::Mat>& lines, const WorkLimit& limit) const;
  /// The same for rows of digits, as if there were no other characters.
  std::vector<SeenDigits> readDigits(const std::vector<cv::Mat>& rows, const WorkLimit& limit) const;

 private:
  /// The probabilities (steps x classes) of line `index`, which covers `usedSteps` of the steps.
  using Take = std::function<void(std::size_t index, std::span<const float> probabilities, double usedSteps)>;
  void run(const std::vector<cv::Mat>& lines, const WorkLimit& limit, const Take& take) const;
  TextCandidate candidate(std::span<const float> probabilities) const;

  Model model_;
  KeyList keys_;
  DigitClasses digits_;
};

}  // namespace pravik::ppocr
