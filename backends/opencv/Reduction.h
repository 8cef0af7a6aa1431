#pragma once

#include <opencv2/core.hpp>

namespace pravik {

/// The picture scaled to `size` by averaging the area of every pixel. Large pictures are halved first as long as they
/// stay twice as large as asked, which is several times as fast; the last row or column of an odd size is then left
/// out. CV_8UC1, CV_8UC3 or CV_8UC4.
cv::Mat reducedByArea(const cv::Mat& picture, cv::Size size);

}  // namespace pravik
