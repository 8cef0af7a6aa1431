#pragma once

#include <opencv2/core/mat.hpp>
#include <span>

#include "backends/onnxruntime/Model.h"

namespace pravik::ppocr {

/// The height at which the direction and recognition models see a line.
inline constexpr int lineHeight = 48;

/// The width of a line (BGR) once it is scaled to lineHeight.
int scaledWidth(const cv::Mat& line);

/// Lines (BGR) as the input of a model: scaled to lineHeight, values from -1 to 1, at the left of `width` columns. A
/// wider line is squeezed; what a narrower one leaves free is mid grey.
Tensor lineBatch(std::span<const cv::Mat> lines, int width);

}  // namespace pravik::ppocr
