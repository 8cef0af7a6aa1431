#pragma once

#include <array>
#include <opencv2/core/types.hpp>
#include <vector>

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
  /// Whether the box is so much higher than wide that it holds a line on its side, which runs along the left edge.
  bool isTall() const;
  /// The direction in which the line in the box runs, in degrees clockwise from one that runs to the right.
  double direction() const;
};

/// The same box seen upside down: the line in it starts at the corner where it ended.
TextBox turned(const TextBox& box);
/// Turns the boxes whose lines run against that of the longest: they are either all upright or all on their heads.
void layAlike(std::vector<TextBox>& boxes);
/// The box with a margin of this many of its heights on all sides.
TextBox withMargin(const TextBox& box, float heights);

/// The corners of a rectangle in the order that TextBox wants.
std::array<cv::Point2f, 4> orderedCorners(const cv::RotatedRect& rectangle);

}  // namespace pravik::ppocr
