#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace pravik {

/// The thin edges of a small picture with the direction in which they grow brighter.
class EdgeMap {
 public:
  /// Steps of a full turn that directions are counted in; even, so that opposite directions are whole steps apart.
  static constexpr int turn = 254;
  /// Pixels beyond the border of the picture that may be read; there are no edges in them.
  static constexpr int margin = 8;

  /// Finds the edges of a CV_8UC3 picture. Each pixel takes the one of luma and colour differences in which it
  /// stands out most from what is usual in this picture, so that the outline shows on a desk of lively grain.
  explicit EdgeMap(const cv::Mat& picture);

  int width() const { return strengths_.cols; }
  int height() const { return strengths_.rows; }
  /// One row of pixels: 0 where there is no edge, else 1 + the direction of the gradient, counted from the x axis
  /// towards the y axis (down) in steps of a full turn.
  const std::uint8_t* row(int y) const { return directions_.ptr(y + margin) + margin; }
  /// One row of strengths: how far the edges of `row(y)` stand out, 1 to 4.
  const std::uint8_t* strengths(int y) const { return strengths_.ptr(y); }

 private:
  cv::Mat directions_;
  cv::Mat strengths_;
};

}  // namespace pravik
