#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "Platform/RectangleDetector.h"
#include "backends/opencv/EdgeLine.h"

namespace pravik {

/// A quadrilateral whose sides lie on lines of an edge map, and what speaks for it. Pixels from the top left.
struct Outline {
  /// In order around the quadrilateral: from the top-left corner to the right.
  std::array<cv::Point2d, 4> corners;
  /// Share of each side that an edge runs along; side i goes from corner i to the next.
  std::array<double, 4> support{};
  /// How much of the sides has the brighter side consistently inside (1) or outside (-1).
  double polarity = 0;
  /// Share of the lines just beyond the corners that an edge runs along: a card ends at its corners.
  double overrun = 0;
  /// Length over width of the flat rectangle of which this is the picture, at least 1.
  double aspect = 1;
  /// Cosine of the angle between the sides of that flat figure: 0 for a rectangle.
  double skew = 0;
  double score = 0;
};

/// The quadrilaterals of lines that fit a request, the best first, at most `most`.
std::vector<Outline> findOutlines(const std::vector<EdgeLine>& lines, cv::Size picture, const RectangleRequest& request,
                                  std::size_t most);

}  // namespace pravik
