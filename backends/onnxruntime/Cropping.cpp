#include "backends/onnxruntime/Cropping.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "backends/onnxruntime/Pixels.h"

namespace pravik::ppocr {
namespace {

/// Whole pixels around the box, inside the picture, so that only these are converted.
cv::Rect surroundings(const TextBox& box, cv::Size picture) {
  const cv::Rect2f bounds = box.bounds();
  const cv::Point topLeft(static_cast<int>(std::floor(bounds.x)) - 1, static_cast<int>(std::floor(bounds.y)) - 1);
  const cv::Point bottomRight(static_cast<int>(std::ceil(bounds.br().x)) + 1,
                              static_cast<int>(std::ceil(bounds.br().y)) + 1);
  return cv::Rect(topLeft, bottomRight) & cv::Rect({}, picture);
}

}  // namespace

cv::Mat cropOf(const cv::Mat& picture, const TextBox& box) {
  const cv::Rect area = surroundings(box, picture.size());
  const cv::Point2f origin(area.tl());
  std::array<cv::Point2f, 4> from = box.corners;
  for (auto& corner : from) corner -= origin;
  const float width = std::max(1.F, std::round(box.width()));
  const float height = std::max(1.F, std::round(box.height()));
  const std::array<cv::Point2f, 4> to{{{0, 0}, {width, 0}, {width, height}, {0, height}}};
  cv::Mat crop;
  cv::warpPerspective(toBgr(picture(area)), crop, cv::getPerspectiveTransform(from.data(), to.data()),
                      cv::Size(static_cast<int>(width), static_cast<int>(height)), cv::INTER_CUBIC,
                      cv::BORDER_REPLICATE);
  if (box.isTall()) cv::rotate(crop, crop, cv::ROTATE_90_COUNTERCLOCKWISE);
  return crop;
}

}  // namespace pravik::ppocr
