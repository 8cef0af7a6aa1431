#include "backends/opencv/Reduction.h"

#include <opencv2/imgproc.hpp>

namespace pravik {

cv::Mat reducedByArea(const cv::Mat& picture, cv::Size size) {
  cv::Mat pixels = picture;
  while (pixels.cols >= 4 * size.width && pixels.rows >= 4 * size.height) {
    const cv::Size half(pixels.cols / 2, pixels.rows / 2);
    cv::Mat halved;
    cv::resize(pixels(cv::Rect(0, 0, 2 * half.width, 2 * half.height)), halved, half, 0, 0, cv::INTER_AREA);
    pixels = halved;
  }
  cv::Mat reduced;
  cv::resize(pixels, reduced, size, 0, 0, cv::INTER_AREA);
  return reduced;
}

}  // namespace pravik
