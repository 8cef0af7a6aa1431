#include "backends/opencv/OpenCvRectangleDetector.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "backends/opencv/Mat.h"
#include "backends/opencv/OutlineSearch.h"

namespace pravik {
namespace {

// Outlines are looked for at this length of the picture's longer side in pixels.
constexpr int workingSide = 640;
// Outlines that are looked at closely.
constexpr std::size_t mostCandidates = 64;

/// The picture at the working size, never enlarged, in three channels.
cv::Mat reduced(const cv::Mat& picture) {
  const double scale = std::min(1.0, static_cast<double>(workingSide) / std::max(picture.cols, picture.rows));
  cv::Mat small = picture;
  if (scale < 1) cv::resize(picture, small, {}, scale, scale, cv::INTER_AREA);
  cv::Mat bgr;
  cv::cvtColor(small, bgr, picture.channels() == 1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR);
  return bgr;
}

Point normalised(cv::Point2d point, cv::Size size) {
  return {std::clamp(point.x / size.width, 0.0, 1.0), std::clamp(1 - point.y / size.height, 0.0, 1.0)};
}

RectangleObservation observation(const Outline& outline, cv::Size size) {
  RectangleObservation found;
  found.corners = {.topLeft = normalised(outline.corners[0], size),
                   .topRight = normalised(outline.corners[1], size),
                   .bottomLeft = normalised(outline.corners[3], size),
                   .bottomRight = normalised(outline.corners[2], size)};
  const auto [left, right] = std::minmax(
      {found.corners.topLeft.x, found.corners.topRight.x, found.corners.bottomLeft.x, found.corners.bottomRight.x});
  const auto [bottom, top] = std::minmax(
      {found.corners.topLeft.y, found.corners.topRight.y, found.corners.bottomLeft.y, found.corners.bottomRight.y});
  found.boundingBox = {left, bottom, right - left, top - bottom};
  found.confidence = static_cast<float>(1 / (1 + std::exp(-4 * (outline.score - 1.4))));
  return found;
}

bool overlaps(const Rect& a, const Rect& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

}  // namespace

std::vector<RectangleObservation> OpenCvRectangleDetector::detect(const Bitmap& bitmap,
                                                                  const RectangleRequest& request) const {
  const cv::Mat picture = reduced(asMat(bitmap));
  const EdgeMap edges(picture);
  std::vector<RectangleObservation> found;
  for (const Outline& outline : findOutlines(findLines(edges), picture.size(), request, mostCandidates)) {
    const RectangleObservation candidate = observation(outline, picture.size());
    if (static_cast<int>(found.size()) >= request.maximumObservations) break;
    if (candidate.confidence < request.minimumConfidence) break;
    const bool taken = std::any_of(found.begin(), found.end(), [&](const RectangleObservation& other) {
      return overlaps(candidate.boundingBox, other.boundingBox);
    });
    if (!taken) found.push_back(candidate);
  }
  return found;
}

}  // namespace pravik
