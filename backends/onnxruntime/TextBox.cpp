#include "backends/onnxruntime/TextBox.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace pravik::ppocr {
namespace {

/// A box this much higher than wide holds a line on its side; a single narrow character stays upright.
constexpr float tallRatio = 1.5F;
/// Lines whose directions are further apart than this in degrees run against each other.
constexpr double opposed = 120;

float distance(const cv::Point2f& a, const cv::Point2f& b) {
  return static_cast<float>(cv::norm(a - b));
}

}  // namespace

float TextBox::width() const {
  return std::max(distance(corners[0], corners[1]), distance(corners[3], corners[2]));
}

float TextBox::height() const {
  return std::max(distance(corners[0], corners[3]), distance(corners[1], corners[2]));
}

cv::Rect2f TextBox::bounds() const {
  const auto [left, right] = std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
  const auto [top, bottom] = std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
  return {left, top, right - left, bottom - top};
}

bool TextBox::isTall() const {
  return height() >= tallRatio * width();
}

double TextBox::direction() const {
  const cv::Point2f along = corners[isTall() ? 3 : 1] - corners[0];
  return std::atan2(along.y, along.x) * 180 / CV_PI;
}

TextBox turned(const TextBox& box) {
  const auto& [topLeft, topRight, bottomRight, bottomLeft] = box.corners;
  return {{bottomRight, bottomLeft, topLeft, topRight}, box.score};
}

void layAlike(std::vector<TextBox>& boxes) {
  if (boxes.empty()) return;
  const auto length = [](const TextBox& box) { return std::max(box.width(), box.height()); };
  const double direction = std::ranges::max_element(boxes, {}, length)->direction();
  for (TextBox& box : boxes)
    if (std::abs(std::remainder(box.direction() - direction, 360)) > opposed) box = turned(box);
}

TextBox withMargin(const TextBox& box, float heights) {
  const auto& [topLeft, topRight, bottomRight, bottomLeft] = box.corners;
  const float margin = heights * std::min(box.width(), box.height());
  const cv::Point2f along = (topRight - topLeft) * (margin / std::max(box.width(), 1.F));
  const cv::Point2f down = (bottomLeft - topLeft) * (margin / std::max(box.height(), 1.F));
  return {{topLeft - along - down, topRight + along - down, bottomRight + along + down, bottomLeft - along + down},
          box.score};
}

std::array<cv::Point2f, 4> orderedCorners(const cv::RotatedRect& rectangle) {
  std::array<cv::Point2f, 4> points;
  rectangle.points(points.data());
  std::ranges::sort(points, {}, &cv::Point2f::x);
  const auto [topLeft, bottomLeft] = std::minmax(points[0], points[1], [](auto& a, auto& b) { return a.y < b.y; });
  const auto [topRight, bottomRight] = std::minmax(points[2], points[3], [](auto& a, auto& b) { return a.y < b.y; });
  return {topLeft, topRight, bottomRight, bottomLeft};
}

}  // namespace pravik::ppocr
