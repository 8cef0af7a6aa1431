#pragma once

#include <array>
#include <opencv2/core/mat.hpp>

namespace pravik::ppocr {

/// The picture (8-bit, one, three or four channels) as three channels of blue, green and red.
cv::Mat toBgr(const cv::Mat& picture);

/// Writes (value / 255 - mean) / deviation of every pixel of a BGR picture to three planes, rows of `rowLength` numbers
/// and planes of `planeLength`.
void writePlanes(const cv::Mat& bgr, const std::array<float, 3>& mean, const std::array<float, 3>& deviation,
                 float* planes, std::size_t rowLength, std::size_t planeLength);

}  // namespace pravik::ppocr
