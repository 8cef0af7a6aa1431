#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "backends/opencv/finder/Outline.h"

namespace pravik {

/// Moves outlines that were found in a reduced picture to the edges of the full one.
class OutlineRefiner {
 public:
  /// `picture` is CV_8UC4 or CV_8UC1; `reduced` is the size of the reduced picture.
  OutlineRefiner(const cv::Mat& picture, cv::Size reduced)
      : picture_(picture),
        scale_(static_cast<double>(picture.cols) / reduced.width, static_cast<double>(picture.rows) / reduced.height) {}

  /// The outline in pixels of the full picture, its sides fitted to the edges there and the evidence that only the
  /// full picture gives filled in.
  Outline refine(const Outline& reduced) const;

 private:
  struct Side;
  using Color = cv::Vec3f;

  Color colorAt(cv::Point2d point) const;
  Side fitSide(cv::Point2d from, cv::Point2d to) const;
  double roundness(const Outline& outline) const;

  cv::Mat picture_;
  /// Pixels of the picture for one of the reduced picture.
  cv::Point2d scale_;
};

}  // namespace pravik
