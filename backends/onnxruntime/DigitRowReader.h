#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/Model.h"

namespace pravik::ppocr {

/// Reads rows of digits with the small network that tools/train makes.
class DigitRowReader {
 public:
  /// Throws std::runtime_error as Model does, and when the file has other classes than the blank and ten digits.
  DigitRowReader(const std::string& modelPath, int threadCount);

  /// The digits of rows (BGR), in the same order. When the limit is spent, what is left has none.
  std::vector<SeenDigits> read(const std::vector<cv::Mat>& rows, const WorkLimit& limit) const;

 private:
  Model model_;
};

}  // namespace pravik::ppocr
