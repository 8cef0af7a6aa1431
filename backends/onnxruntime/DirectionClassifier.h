#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "backends/onnxruntime/Model.h"

namespace pravik::ppocr {

/// Tells lines that stand on their head from upright ones.
class DirectionClassifier {
 public:
  /// Throws std::runtime_error as Model does.
  DirectionClassifier(const std::string& modelPath, int threadCount);

  /// How likely each line (BGR) stands on its head, 0 to 1.
  std::vector<float> upsideDown(const std::vector<cv::Mat>& lines) const;

 private:
  Model model_;
};

}  // namespace pravik::ppocr
