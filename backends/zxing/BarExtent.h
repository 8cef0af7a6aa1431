#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace pravik {

/// Corners of a code in the order of ZXing: around it, the first two along one row of the bars.
using CodeOutline = std::array<cv::Point2d, 4>;

/// The outline of a bar code grown from the rows that were read to the whole length of the bars: row by row to both
/// sides, as long as a row looks like the one before it.
CodeOutline grownAlongBars(const cv::Mat& grey, const CodeOutline& rows);

}  // namespace pravik
