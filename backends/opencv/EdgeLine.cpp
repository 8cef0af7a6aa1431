#include "backends/opencv/EdgeLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "backends/opencv/EdgeAlignment.h"

namespace pravik {

Stretch stretchOnMap(const EdgeMap& edges, cv::Point2d point, cv::Point2d direction) {
  double from = -std::numeric_limits<double>::infinity(), to = std::numeric_limits<double>::infinity();
  const auto clip = [&](double start, double step, double last) {
    if (std::abs(step) < 1e-9) {
      if (start < 0 || start > last) to = -std::numeric_limits<double>::infinity();
      return;
    }
    const double a = -start / step, b = (last - start) / step;
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
  };
  clip(point.x, direction.x, edges.width() - 1);
  clip(point.y, direction.y, edges.height() - 1);
  if (!(from <= to)) return {};
  return {static_cast<int>(std::ceil(from)), static_cast<int>(std::floor(to))};
}

EdgeLine::EdgeLine(const EdgeMap& edges, cv::Point2d point, cv::Point2d direction)
    : origin_(point), direction_(direction) {
  const Stretch stretch = stretchOnMap(edges, point, direction);
  const EdgeAlignment alignment(edges, direction);
  origin_ = at(stretch.from);
  supported_.assign(1, 0);
  signed_.assign(1, 0);
  const cv::Point2f across = normal();
  for (int position = 0; position <= stretch.to - stretch.from; ++position) {
    const cv::Point2f middle = at(position);
    int sign = alignment.signAt(middle);
    if (sign == 0) sign = alignment.signAt(middle - across);
    if (sign == 0) sign = alignment.signAt(middle + across);
    supported_.push_back(supported_.back() + std::abs(sign));
    signed_.push_back(signed_.back() + sign);
  }
}

int EdgeLine::sum(double from, double to, const std::vector<int>& sums) const {
  const auto index = [&](double position) {
    return static_cast<std::size_t>(std::clamp(position + 0.5, 0.0, static_cast<double>(sums.size() - 1)));
  };
  return sums[index(to)] - sums[index(from)];
}

EdgeLine::Support EdgeLine::support(double from, double to) const {
  if (from > to) std::swap(from, to);
  const double length = std::max(1.0, to - from);
  return {.share = std::min(1.0, sum(from, to, supported_) / length),
          .polarity = std::clamp(sum(from, to, signed_) / length, -1.0, 1.0)};
}

cv::Point2d EdgeLine::intersection(const EdgeLine& other) const {
  const double sine = direction_.cross(other.direction_);
  const double position = (other.origin_ - origin_).cross(other.direction_) / (std::abs(sine) < 1e-9 ? 1e-9 : sine);
  return at(position);
}

}  // namespace pravik
