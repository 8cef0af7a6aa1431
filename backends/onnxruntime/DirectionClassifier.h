#pragma once

#include <opencv2/core/mat.hpp>
#include <span>
#include <string>
#include <vector>

#include "backends/onnxruntime/Model.h"

namespace pravik::ppocr {

/// Tells lines that stand on their head from upright ones.
class DirectionClassifier {
 public:
  /// Throws std::runtime_error as Model does.
  DirectionClassifier(const std::string& modelPath, int threadCount);

  /// Whether the lines (BGR) of a picture stand on their head. They are judged together, by the longest of them: a
  /// short line, such as the house number at the end of an address, often looks like another one upside down.
  bool areUpsideDown(const std::vector<cv::Mat>& lines) const;

  /// How likely each line stands on its head, 0 to 1.
  std::vector<float> upsideDown(std::span<const cv::Mat> lines) const;

 private:
  Model model_;
};

}  // namespace pravik::ppocr
