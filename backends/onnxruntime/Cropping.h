#pragma once

#include <opencv2/core/mat.hpp>

#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// Cuts a line of text out of a picture (8-bit grey or BGRA) and straightens it: BGR, lines run left to right. A tall
/// box is a line that runs down or up: it is turned a quarter counter-clockwise.
cv::Mat cropOf(const cv::Mat& picture, const TextBox& box);

}  // namespace pravik::ppocr
