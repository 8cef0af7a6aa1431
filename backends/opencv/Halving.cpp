#include "backends/opencv/Halving.h"

#include <opencv2/imgproc.hpp>

namespace pravik {
namespace {

/// Half the size in both directions. Whole factors only: a factor between them would take fifteen times as long.
cv::Mat halved(const cv::Mat& pixels) {
  const cv::Size half(pixels.cols / 2, pixels.rows / 2);
  cv::Mat result(half, pixels.type());
  const auto reduce = [&](const cv::Rect& from, const cv::Rect& to) {
    cv::Mat part = result(to);
    cv::resize(pixels(from), part, to.size(), 0, 0, cv::INTER_AREA);
  };
  const int width = 2 * half.width, height = 2 * half.height;
  const bool oddWidth = pixels.cols > width, oddHeight = pixels.rows > height;
  reduce({0, 0, width, height}, {{}, half});
  if (oddWidth) reduce({width - 2, 0, 3, height}, {half.width - 1, 0, 1, half.height});
  if (oddHeight) reduce({0, height - 2, width, 3}, {0, half.height - 1, half.width, 1});
  if (oddWidth && oddHeight) reduce({width - 2, height - 2, 3, 3}, {half.width - 1, half.height - 1, 1, 1});
  return result;
}

}  // namespace

cv::Mat halvedTowards(const cv::Mat& picture, cv::Size size) {
  cv::Mat pixels = picture;
  while (pixels.cols >= 2 * size.width && pixels.rows >= 2 * size.height) pixels = halved(pixels);
  return pixels;
}

}  // namespace pravik
