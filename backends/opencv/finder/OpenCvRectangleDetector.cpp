#include "backends/opencv/finder/OpenCvRectangleDetector.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "backends/opencv/Halving.h"
#include "backends/opencv/Mat.h"
#include "backends/opencv/finder/LineSearch.h"
#include "backends/opencv/finder/Outline.h"

namespace pravik {
namespace {

// Outlines are looked for at this length of the picture's longer side in pixels.
constexpr int workingSide = 640;
// Outlines that are looked at closely.
constexpr std::size_t mostCandidates = 16;
// Two cards that are seen whole do not overlap; the less likely outline is then a part or a surrounding of the other.
constexpr double greatestOverlap = 0.1;

/// The picture at the working size, never enlarged, in three channels.
cv::Mat reduced(const cv::Mat& picture) {
  const double scale = std::min(1.0, static_cast<double>(workingSide) / std::max(picture.cols, picture.rows));
  const cv::Size size(std::max(1, cvRound(scale * picture.cols)), std::max(1, cvRound(scale * picture.rows)));
  cv::Mat small, bgr;
  cv::resize(halvedTowards(picture, size), small, size, 0, 0, cv::INTER_LINEAR);
  cv::cvtColor(small, bgr, picture.channels() == 1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR);
  return bgr;
}

Point normalised(cv::Point2d point, cv::Size size) {
  return {std::clamp(point.x / size.width, 0.0, 1.0), std::clamp(1 - point.y / size.height, 0.0, 1.0)};
}

RectangleObservation observation(const Outline& outline, cv::Size size) {
  RectangleObservation found;
  auto& corners = found.corners;
  corners = {.topLeft = normalised(outline.corners[0], size),
             .topRight = normalised(outline.corners[1], size),
             .bottomLeft = normalised(outline.corners[3], size),
             .bottomRight = normalised(outline.corners[2], size)};
  const auto [left, right] =
      std::minmax({corners.topLeft.x, corners.topRight.x, corners.bottomLeft.x, corners.bottomRight.x});
  const auto [bottom, top] =
      std::minmax({corners.topLeft.y, corners.topRight.y, corners.bottomLeft.y, corners.bottomRight.y});
  found.boundingBox = {.x = left, .y = bottom, .width = right - left, .height = top - bottom};
  found.confidence = static_cast<float>(confidence(outline));
  return found;
}

std::vector<Outline> refinedOutlines(const cv::Mat& picture, const RectangleRequest& request) {
  const cv::Mat small = reduced(picture);
  const EdgeMap edges(small);
  const OutlineRefiner refiner(picture, small.size());
  std::vector<Outline> outlines;
  for (const Outline& outline : findOutlines(findLines(edges), small.size(), request, mostCandidates))
    outlines.push_back(refiner.refine(outline));
  std::ranges::sort(outlines, [](const Outline& a, const Outline& b) { return confidence(a) > confidence(b); });
  return outlines;
}

}  // namespace

std::vector<RectangleObservation> OpenCvRectangleDetector::detect(const Bitmap& bitmap,
                                                                  const RectangleRequest& request) const {
  const cv::Mat picture = asMat(bitmap);
  std::vector<Outline> kept;
  std::vector<RectangleObservation> found;
  for (const Outline& outline : refinedOutlines(picture, request)) {
    if (static_cast<int>(found.size()) >= request.maximumObservations) break;
    const bool covered =
        std::ranges::any_of(kept, [&](const Outline& other) { return overlap(outline, other) > greatestOverlap; });
    if (covered) continue;
    const RectangleObservation candidate = observation(outline, picture.size());
    if (candidate.confidence < request.minimumConfidence) break;
    kept.push_back(outline);
    found.push_back(candidate);
  }
  return found;
}

}  // namespace pravik
