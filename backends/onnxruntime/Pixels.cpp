#include "backends/onnxruntime/Pixels.h"

#include <opencv2/imgproc.hpp>

namespace pravik::ppocr {

cv::Mat toBgr(const cv::Mat& picture) {
  cv::Mat bgr = picture;
  if (picture.channels() == 4) cv::cvtColor(picture, bgr, cv::COLOR_BGRA2BGR);
  if (picture.channels() == 1) cv::cvtColor(picture, bgr, cv::COLOR_GRAY2BGR);
  return bgr;
}

void writePlanes(const cv::Mat& bgr, const std::array<float, 3>& mean, const std::array<float, 3>& deviation,
                 float* planes, std::size_t rowLength, std::size_t planeLength) {
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const float scale = 1 / (255 * deviation[channel]);
    const float offset = -mean[channel] / deviation[channel];
    for (int y = 0; y < bgr.rows; ++y) {
      const auto* pixel = bgr.ptr<std::uint8_t>(y) + channel;
      float* out = planes + channel * planeLength + static_cast<std::size_t>(y) * rowLength;
      for (int x = 0; x < bgr.cols; ++x, pixel += 3) *out++ = static_cast<float>(*pixel) * scale + offset;
    }
  }
}

}  // namespace pravik::ppocr
