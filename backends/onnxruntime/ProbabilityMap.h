#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// The boxes of text in a map of the detection model (32-bit floats, 0 to 1: how likely a pixel lies in the core of
/// a line of text), in pixels of the map, not clipped to it.
std::vector<TextBox> boxesOf(const cv::Mat& map);

/// The model marks only the core of a line, shrunk on all sides; this grows it back to the whole line: every side
/// moves out by area * ratio / perimeter (Liao et al. 2020, section 3.4; Vatti's polygon offset, which for a rectangle
/// is a larger rectangle).
cv::RotatedRect grown(const cv::RotatedRect& core);

}  // namespace pravik::ppocr
