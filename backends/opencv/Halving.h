#pragma once

#include <opencv2/core.hpp>

namespace pravik {

/// The picture halved as often as it stays at least as large as `size`: the fast way to do most of a reduction. Of an
/// odd size the last three rows or columns become one. CV_8UC1, CV_8UC3 or CV_8UC4; shares the pixels when there is
/// nothing to do.
cv::Mat halvedTowards(const cv::Mat& picture, cv::Size size);

}  // namespace pravik
