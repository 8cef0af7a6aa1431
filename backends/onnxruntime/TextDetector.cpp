#include "backends/onnxruntime/TextDetector.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "backends/onnxruntime/Pixels.h"
#include "backends/onnxruntime/ProbabilityMap.h"

namespace pravik::ppocr {
namespace {

/// The model halves its input five times.
constexpr int sideStep = 32;
/// Pixels that are searched: with fewer, lone characters are lost.
constexpr double accuratePixels = 960 * 720;
constexpr double fastPixels = 640 * 480;
/// A small picture is enlarged by this at most: its text does not become clearer.
constexpr double maximumEnlargement = 2;
/// A picture as long as this, in its short sides, is a line or two: it needs less than a whole card, which it would
/// cost as much as.
constexpr double bandAspect = 3;
constexpr double bandShare = 0.6;
/// Bounds the long side of extreme shapes, whose short side cannot go below sideStep.
constexpr int maximumSide = 4096;
/// Statistics of the pictures that the model was trained on, blue, green, red in the order that training used.
constexpr std::array<float, 3> mean{0.485F, 0.456F, 0.406F};
constexpr std::array<float, 3> deviation{0.229F, 0.224F, 0.225F};

int roundedSide(double side) {
  const int steps = static_cast<int>(std::lround(std::min<double>(side, maximumSide) / sideStep));
  return std::max(steps, 1) * sideStep;
}

Tensor inputOf(const cv::Mat& picture, cv::Size size) {
  cv::Mat scaled;
  const bool shrinks = size.area() < picture.size().area();
  cv::resize(picture, scaled, size, 0, 0, shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
  const std::vector<std::int64_t> shape{1, 3, size.height, size.width};
  auto values = allocateValues(shape);
  const auto width = static_cast<std::size_t>(size.width);
  writePlanes(toBgr(scaled), mean, deviation, values.get(), width, width * static_cast<std::size_t>(size.height));
  return {shape, values};
}

}  // namespace

cv::Size detectionSize(cv::Size picture, RecognitionLevel level) {
  const double budget = level == RecognitionLevel::accurate ? accuratePixels : fastPixels;
  const double pixels = static_cast<double>(picture.width) * picture.height;
  const bool isBand = std::max(picture.width, picture.height) > bandAspect * std::min(picture.width, picture.height);
  const double scale = std::min(std::sqrt(budget * (isBand ? bandShare : 1) / pixels), maximumEnlargement);
  return {roundedSide(picture.width * scale), roundedSide(picture.height * scale)};
}

TextDetector::TextDetector(const std::string& modelPath, int threadCount) : model_(modelPath, threadCount, 4) {}

std::vector<TextBox> TextDetector::detect(const cv::Mat& picture, RecognitionLevel level) const {
  const cv::Size size = detectionSize(picture.size(), level);
  const Tensor output = model_.run(inputOf(picture, size));
  const cv::Mat map(size, CV_32F, const_cast<float*>(output.values.get()));
  auto boxes = boxesOf(map);
  const float scaleX = static_cast<float>(picture.cols) / static_cast<float>(size.width);
  const float scaleY = static_cast<float>(picture.rows) / static_cast<float>(size.height);
  for (auto& box : boxes)
    for (auto& corner : box.corners) {
      corner.x = std::clamp(corner.x * scaleX, 0.F, static_cast<float>(picture.cols));
      corner.y = std::clamp(corner.y * scaleY, 0.F, static_cast<float>(picture.rows));
    }
  return boxes;
}

}  // namespace pravik::ppocr
