#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "backends/opencv/EdgeMap.h"

namespace pravik {

/// Tells which edges of a map run along lines of one direction.
class EdgeAlignment {
 public:
  /// `direction` is that of the lines and has length 1.
  EdgeAlignment(const EdgeMap& edges, cv::Point2d direction);

  /// 1 or -1 when the edge at the pixel nearest to `point` runs along the lines: 1 when its bright side is a quarter
  /// turn from the direction, from the x axis towards the y axis; 0 when there is no such edge. The point must be
  /// within the margin of the map.
  int signAt(cv::Point2f point) const {
    const int x = static_cast<int>(point.x + (EdgeMap::margin + 0.5F)) - EdgeMap::margin;
    const int y = static_cast<int>(point.y + (EdgeMap::margin + 0.5F)) - EdgeMap::margin;
    return signs_[edges_->row(y)[x]];
  }

 private:
  const EdgeMap* edges_;
  /// By the value of the map at a pixel.
  const std::int8_t* signs_;
};

}  // namespace pravik
