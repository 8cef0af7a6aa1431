#pragma once

#include <array>
#include <opencv2/core/types.hpp>

namespace pravik::ppocr {

/// Where a line of text stands: a rectangle at any angle.
struct TextBox {
  /// Pixels from the top left; clockwise from the corner at the upper left.
  std::array<cv::Point2f, 4> corners;
  /// How sure the detector is that this is text, 0 to 1.
  float score = 0;

  /// Length of the upper edge.
  float width() const;
  /// Length of the left edge.
  float height() const;
  /// The upright rectangle around the corners.
  cv::Rect2f bounds() const;
};

/// The corners of a rectangle in the order that TextBox wants.
std::array<cv::Point2f, 4> orderedCorners(const cv::RotatedRect& rectangle);

}  // namespace pravik::ppocr
