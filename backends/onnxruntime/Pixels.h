#pragma once

#include <array>
#include <opencv2/core/mat.hpp>

#include "Platform/Bitmap.h"

namespace pravik::ppocr {

/// A view of the bitmap's pixels, one or four channels; valid as long as the bitmap.
cv::Mat view(const Bitmap& bitmap);

/// The picture (8-bit, one, three or four channels) as three channels of blue, green and red.
cv::Mat toBgr(const cv::Mat& picture);

/// Writes (value / 255 - mean) / deviation of every pixel of a BGR picture to three planes, rows of `rowLength` numbers
/// and planes of `planeLength`.
void writePlanes(const cv::Mat& bgr, const std::array<float, 3>& mean, const std::array<float, 3>& deviation,
                 float* planes, std::size_t rowLength, std::size_t planeLength);

}  // namespace pravik::ppocr
