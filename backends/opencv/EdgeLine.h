#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "backends/opencv/EdgeMap.h"

namespace pravik {

/// Whole positions along a line in pixels from one of its points, both ends included; none when `to` is below `from`.
struct Stretch {
  int from = 0;
  int to = -1;
};

/// The positions at which the line through `point` along `direction` (of length 1) is on the map.
Stretch stretchOnMap(const EdgeMap& edges, cv::Point2d point, cv::Point2d direction);

/// A straight line across an edge map that knows where edges run along it. Pixels from the top left.
class EdgeLine {
 public:
  /// What lies along a stretch of the line.
  struct Support {
    /// Share of the stretch with an edge along the line, 0 to 1.
    double share = 0;
    /// The same counted with the side that is brighter: 1 when everywhere `normal()` points to the bright side, -1 when
    /// nowhere.
    double polarity = 0;
  };

  /// The line through `point` along `direction` (of length 1), followed over the whole map.
  EdgeLine(const EdgeMap& edges, cv::Point2d point, cv::Point2d direction);

  /// The part of the line on the map reaches from position 0 to here.
  double length() const { return static_cast<double>(supported_.size()) - 1; }
  cv::Point2d direction() const { return direction_; }
  /// A quarter turn from the direction, from the x axis towards the y axis.
  cv::Point2d normal() const { return {-direction_.y, direction_.x}; }
  /// Where along the line the point nearest to `point` lies, in pixels.
  double position(cv::Point2d point) const { return (point - origin_).dot(direction_); }
  cv::Point2d at(double position) const { return origin_ + position * direction_; }
  /// The support between two positions; what lies outside the map has none.
  Support support(double from, double to) const;
  /// The intersection of two lines; far away when they are parallel.
  cv::Point2d intersection(const EdgeLine& other) const;

 private:
  int sum(double from, double to, const std::vector<int>& sums) const;

  cv::Point2d origin_;
  cv::Point2d direction_;
  // Sums over the whole pixels of the line from its start: supported ones, and those signed by the bright side.
  std::vector<int> supported_;
  std::vector<int> signed_;
};

}  // namespace pravik
