#include "backends/opencv/Halving.h"

#include <opencv2/imgproc.hpp>

namespace pravik {

cv::Mat halvedTowards(const cv::Mat& picture, cv::Size size) {
  cv::Mat pixels = picture;
  while (pixels.cols >= 2 * size.width && pixels.rows >= 2 * size.height) {
    const cv::Size half(pixels.cols / 2, pixels.rows / 2);
    cv::Mat halved;
    cv::resize(pixels(cv::Rect(0, 0, 2 * half.width, 2 * half.height)), halved, half, 0, 0, cv::INTER_AREA);
    pixels = halved;
  }
  return pixels;
}

}  // namespace pravik
