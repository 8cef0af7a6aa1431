#include "backends/onnxruntime/LineBatch.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "backends/onnxruntime/Pixels.h"

namespace pravik::ppocr {

int scaledWidth(const cv::Mat& line) {
  return std::max(1, static_cast<int>(std::ceil(static_cast<double>(lineHeight) * line.cols / line.rows)));
}

Tensor lineBatch(std::span<const cv::Mat> lines, int width) {
  constexpr std::array<float, 3> half{0.5F, 0.5F, 0.5F};
  const std::vector<std::int64_t> shape{static_cast<std::int64_t>(lines.size()), 3, lineHeight, width};
  auto values = allocateValues(shape);
  const auto rowLength = static_cast<std::size_t>(width);
  const std::size_t planeLength = rowLength * lineHeight;
  float* planes = values.get();
  for (const auto& line : lines) {
    cv::Mat scaled;
    const bool shrinks = line.rows > lineHeight;
    cv::resize(line, scaled, {std::min(scaledWidth(line), width), lineHeight}, 0, 0,
               shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
    writePlanes(scaled, half, half, planes, rowLength, planeLength);
    planes += 3 * planeLength;
  }
  return {shape, values};
}

}  // namespace pravik::ppocr
