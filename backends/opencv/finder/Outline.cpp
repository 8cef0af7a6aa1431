#include "backends/opencv/finder/Outline.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace pravik {
namespace {

constexpr double cardAspect = 85.60 / 53.98;

/// Weights of the evidence in a logistic regression, fitted to the outlines found in drawn photos of cards on desks and
/// of desks without a card, and rounded.
struct Evidence {
  double leastSupport = 5;
  double overrun = -11;
  double shapeError = -23;
  double skew = -13;
  double sharpSupport = 1;
  double leastSharpSupport = 7;
  double roundness = 3.5;
  double bias = -6.2;
};
// Beyond these a figure is no card, however far it is.
constexpr double worstShapeError = 0.4;
constexpr double worstSkew = 0.3;

std::vector<cv::Point2f> polygon(const Outline& outline) {
  return {outline.corners.begin(), outline.corners.end()};
}

}  // namespace

/// The flat rectangle behind a quadrilateral, with the camera's focal length taken as the longer side of the picture
/// and its axis as the middle of the picture. The columns of the homography from the unit square, freed of the camera,
/// are the sides of the flat figure (Zhang and He, 2007).
void setShape(Outline& outline, cv::Size picture) {
  const double focal = std::max(picture.width, picture.height);
  const cv::Point2d middle(picture.width / 2.0, picture.height / 2.0);
  std::array<cv::Point2d, 4> p;
  for (std::size_t i = 0; i < 4; ++i) p[i] = (outline.corners[i] - middle) / focal;
  const cv::Point2d sum = p[0] - p[1] + p[2] - p[3];
  const cv::Point2d a = p[1] - p[2], b = p[3] - p[2];
  const double denominator = a.cross(b);
  const double g = sum.cross(b) / denominator, h = a.cross(sum) / denominator;
  const cv::Point3d across(p[1].x - p[0].x + g * p[1].x, p[1].y - p[0].y + g * p[1].y, g);
  const cv::Point3d down(p[3].x - p[0].x + h * p[3].x, p[3].y - p[0].y + h * p[3].y, h);
  const double ratio = cv::norm(across) / cv::norm(down);
  outline.aspect = std::max(ratio, 1 / ratio);
  outline.skew = std::abs(across.dot(down)) / (cv::norm(across) * cv::norm(down));
}

double cardShapeError(const Outline& outline) {
  return std::abs(std::log(outline.aspect / cardAspect));
}

double confidence(const Outline& outline) {
  constexpr Evidence weight;
  const double evidence = weight.leastSupport * outline.leastSupport + weight.overrun * outline.overrun +
                          weight.shapeError * std::min(worstShapeError, cardShapeError(outline)) +
                          weight.skew * std::min(worstSkew, outline.skew) + weight.sharpSupport * outline.sharpSupport +
                          weight.leastSharpSupport * outline.leastSharpSupport +
                          weight.roundness * std::max(0.0, outline.roundness) + weight.bias;
  return 1 / (1 + std::exp(-evidence));
}

double overlap(const Outline& a, const Outline& b) {
  const auto first = polygon(a), second = polygon(b);
  std::vector<cv::Point2f> common;
  const double area = cv::intersectConvexConvex(first, second, common);
  return area / std::max(1e-9, std::min(cv::contourArea(first), cv::contourArea(second)));
}

}  // namespace pravik
