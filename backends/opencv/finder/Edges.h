#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

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
