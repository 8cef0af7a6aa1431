#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/Model.h"
#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// The size at which a picture is searched for text: sides are multiples of 32, about the picture's shape.
cv::Size detectionSize(cv::Size picture, RecognitionLevel level);

/// Finds lines of text with the detection model (Liao et al., Real-time Scene Text Detection with Differentiable
/// Binarization, AAAI 2020).
class TextDetector {
 public:
  /// Throws std::runtime_error as Model does.
  TextDetector(const std::string& modelPath, int threadCount);

  /// Boxes in pixels of `picture` (8-bit grey or BGRA), in no particular order.
  std::vector<TextBox> detect(const cv::Mat& picture, RecognitionLevel level) const;

 private:
  Model model_;
};

}  // namespace pravik::ppocr
