#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
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

 private:
  TextCandidate candidate(const float* probabilities, std::size_t steps) const;

  Model model_;
  KeyList keys_;
};

}  // namespace pravik::ppocr
