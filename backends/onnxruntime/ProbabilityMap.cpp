#include "backends/onnxruntime/ProbabilityMap.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

namespace pravik::ppocr {
namespace {

/// A pixel above this belongs to text.
constexpr double pixelThreshold = 0.3;
/// A box whose pixels are less likely than this on average is noise.
constexpr double boxThreshold = 0.6;
/// A box about as wide as high needs more: patterns of a background make such boxes, and a lone character is sure.
constexpr double squareBoxThreshold = 0.7;
constexpr float squareAspect = 1.8F;
/// How far a core grows back to its line. Less would cut the outer strokes of a lone character.
constexpr float growth = 1.8F;
/// A core thinner than this many pixels of the map is noise.
constexpr float minimumCoreSide = 3;

double meanInside(const cv::Mat& map, const std::vector<cv::Point>& contour) {
  const cv::Rect area = cv::boundingRect(contour);
  cv::Mat mask = cv::Mat::zeros(area.size(), CV_8U);
  cv::fillPoly(mask, std::vector{contour}, cv::Scalar(1), cv::LINE_8, 0, -area.tl());
  return cv::mean(map(area), mask)[0];
}

}  // namespace

cv::RotatedRect grown(const cv::RotatedRect& core) {
  const auto [width, height] = core.size;
  const float distance = width * height * growth / (2 * (width + height));
  return {core.center, {width + 2 * distance, height + 2 * distance}, core.angle};
}

std::vector<TextBox> boxesOf(const cv::Mat& map) {
  const cv::Mat text = map > pixelThreshold;
  std::vector<std::vector<cv::Point>> contours;
  cv::findContours(text, contours, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
  std::vector<TextBox> boxes;
  for (const auto& contour : contours) {
    const cv::RotatedRect core = cv::minAreaRect(contour);
    if (std::min(core.size.width, core.size.height) < minimumCoreSide) continue;
    const double score = meanInside(map, contour);
    const bool isSquare =
        std::max(core.size.width, core.size.height) < squareAspect * std::min(core.size.width, core.size.height);
    if (score < (isSquare ? squareBoxThreshold : boxThreshold)) continue;
    boxes.push_back({orderedCorners(grown(core)), static_cast<float>(score)});
  }
  return boxes;
}

}  // namespace pravik::ppocr
