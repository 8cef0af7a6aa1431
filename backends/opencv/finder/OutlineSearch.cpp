#include "backends/opencv/finder/Outline.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pravik {
namespace {

// Opposite sides converge by no more than this in a photo that can be read, in degrees.
constexpr double widestConvergence = 35;
// A side is worth a look when this share of it is an edge.
constexpr double leastSupport = 0.3;
constexpr double leastMeanSupport = 0.5;
// Cards have rounded corners: this share of a side at either end is not counted.
constexpr double roundedShare = 0.07;
// The share of a side's length beyond its corners that is searched for an overrun.
constexpr double overrunShare = 0.12;
// At least so many pixels are searched, beginning so many pixels beyond the corner.
constexpr double leastOverrun = 6;
constexpr double cornerGap = 3;
// With fewer pixels of it in the picture, the overrun is guessed.
constexpr double leastVisible = 3;
constexpr double unseenOverrun = 0.4;
// Corners may lie this share of the longer side outside of the picture.
constexpr double margin = 0.01;

// Outlines whose corners all lie within this many pixels of each other become one when they are refined.
constexpr double sameCorner = 1.5;

using Corners = std::array<cv::Point2d, 4>;

/// From the corner nearest to the top left, clockwise as a person sees it.
Corners ordered(Corners corners) {
  double area = 0;
  for (std::size_t i = 0; i < 4; ++i) area += corners[i].cross(corners[(i + 1) % 4]);
  if (area < 0) std::ranges::reverse(corners);
  const auto first = std::ranges::min_element(corners, {}, [](cv::Point2d corner) { return corner.x + corner.y; });
  std::ranges::rotate(corners, first);
  return corners;
}

/// How promising an outline is before it is looked at closely.
double promise(const Outline& outline) {
  return outline.support + outline.leastSupport + 0.3 * std::abs(outline.polarity) - 0.5 * outline.overrun -
         3 * std::min(0.5, cardShapeError(outline)) - 2 * outline.skew;
}

bool same(const Outline& a, const Outline& b) {
  for (std::size_t i = 0; i < 4; ++i)
    if (cv::norm(a.corners[i] - b.corners[i]) > sameCorner) return false;
  return true;
}

class Search {
 public:
  Search(const std::vector<EdgeLine>& lines, cv::Size picture, const RectangleRequest& request)
      : lines_(lines),
        picture_(picture),
        request_(request),
        slack_(margin * std::max(picture.width, picture.height)),
        leastSide_(std::max(16.0, static_cast<double>(request.minimumSize) * std::min(picture.width, picture.height))) {
    const std::size_t n = lines.size();
    crossing_.resize(n * n);
    cosine_.resize(n * n, 1.0);
    for (std::size_t a = 0; a < n; ++a) {
      for (std::size_t b = 0; b < n; ++b) {
        if (a == b) continue;
        crossing_[a * n + b] = lines[a].position(lines[a].intersection(lines[b]));
        cosine_[a * n + b] = std::abs(lines[a].direction().dot(lines[b].direction()));
      }
    }
  }

  std::vector<Outline> run() {
    const double leastCosine = std::cos(widestConvergence * CV_PI / 180);
    for (std::size_t a = 0; a < lines_.size(); ++a)
      for (std::size_t b = a + 1; b < lines_.size(); ++b)
        if (cosine(a, b) >= leastCosine) pair(a, b);
    return std::move(found_);
  }

 private:
  struct Rung {
    std::size_t line;
    double onA, onB;
    double support;
  };

  /// Of the angle between two lines.
  double cosine(std::size_t a, std::size_t b) const { return cosine_[a * lines_.size() + b]; }

  bool inside(cv::Point2d point) const {
    return point.x >= -slack_ && point.y >= -slack_ && point.x <= picture_.width + slack_ &&
           point.y <= picture_.height + slack_;
  }

  double crossing(std::size_t a, std::size_t b) const { return crossing_[a * lines_.size() + b]; }

  static double share(const EdgeLine& line, double from, double to) {
    const double trim = roundedShare * (to - from);
    return line.support(from + trim, to - trim).share;
  }

  void pair(std::size_t a, std::size_t b) {
    const double greatestCosine = std::sin(request_.quadratureTolerance * CV_PI / 180);
    rungs_.clear();
    for (std::size_t c = a + 1; c < lines_.size(); ++c) {
      if (c == b || cosine(a, c) > greatestCosine || cosine(b, c) > greatestCosine) continue;
      const double onA = crossing(a, c), onB = crossing(b, c);
      const double from = crossing(c, a), to = crossing(c, b);
      if (std::abs(to - from) < leastSide_ || !inside(lines_[a].at(onA)) || !inside(lines_[b].at(onB))) continue;
      const double support = share(lines_[c], from, to);
      if (support >= leastSupport) rungs_.push_back({c, onA, onB, support});
    }
    const bool sameWay = lines_[a].direction().dot(lines_[b].direction()) > 0;
    for (std::size_t i = 0; i < rungs_.size(); ++i)
      for (std::size_t j = i + 1; j < rungs_.size(); ++j) quad(a, b, rungs_[i], rungs_[j], sameWay);
  }

  void quad(std::size_t a, std::size_t b, const Rung& c, const Rung& d, bool sameWay) {
    const double alongA = d.onA - c.onA, alongB = (d.onB - c.onB) * (sameWay ? 1 : -1);
    if (std::abs(alongA) < leastSide_ || std::abs(alongB) < leastSide_ || (alongA > 0) != (alongB > 0)) return;
    const double supportA = share(lines_[a], c.onA, d.onA);
    if (supportA < leastSupport) return;
    const double supportB = share(lines_[b], c.onB, d.onB);
    if (supportB < leastSupport) return;
    if (supportA + supportB + c.support + d.support < 4 * leastMeanSupport) return;
    Outline outline;
    outline.corners = ordered({lines_[a].at(c.onA), lines_[a].at(d.onA), lines_[b].at(d.onB), lines_[b].at(c.onB)});
    if (!shapeFits(outline.corners)) return;
    setShape(outline, picture_);
    const cv::Point2d middle = (outline.corners[0] + outline.corners[1] + outline.corners[2] + outline.corners[3]) / 4;
    outline.support = (supportA + supportB + c.support + d.support) / 4;
    outline.leastSupport = std::min({supportA, supportB, c.support, d.support});
    measure(outline, lines_[a], c.onA, d.onA, middle);
    measure(outline, lines_[b], c.onB, d.onB, middle);
    measure(outline, lines_[c.line], crossing(c.line, a), crossing(c.line, b), middle);
    measure(outline, lines_[d.line], crossing(d.line, a), crossing(d.line, b), middle);
    found_.push_back(outline);
  }

  bool shapeFits(const Corners& corners) const {
    std::array<double, 4> sides{};
    for (std::size_t i = 0; i < 4; ++i) sides[i] = cv::norm(corners[(i + 1) % 4] - corners[i]);
    const double one = (sides[0] + sides[2]) / 2, other = (sides[1] + sides[3]) / 2;
    const double ratio = std::min(one, other) / std::max(one, other);
    if (ratio < request_.minimumAspectRatio || ratio > request_.maximumAspectRatio) return false;
    if (std::min(one, other) < static_cast<double>(request_.minimumSize) * std::min(picture_.width, picture_.height))
      return false;
    for (std::size_t i = 0; i < 4; ++i) {
      const cv::Point2d u = corners[(i + 1) % 4] - corners[i], v = corners[(i + 3) % 4] - corners[i];
      const double degrees = std::acos(std::clamp(u.dot(v) / (cv::norm(u) * cv::norm(v)), -1.0, 1.0)) * 180 / CV_PI;
      if (std::abs(degrees - 90) > request_.quadratureTolerance) return false;
    }
    return true;
  }

  /// Share of a stretch beyond a corner that is an edge; what the picture does not show may or may not be one.
  static double overrun(const EdgeLine& line, double from, double to) {
    from = std::max(from, 0.0);
    to = std::min(to, line.length());
    return to - from < leastVisible ? unseenOverrun : line.support(from, to).share;
  }

  /// Adds what one side contributes to the evidence.
  static void measure(Outline& outline, const EdgeLine& line, double from, double to, cv::Point2d middle) {
    if (from > to) std::swap(from, to);
    const double beyond = std::max(leastOverrun, overrunShare * (to - from));
    const bool inwards = (middle - line.at(from)).dot(line.normal()) > 0;
    outline.polarity += line.support(from, to).polarity * (inwards ? 0.25 : -0.25);
    outline.overrun += overrun(line, from - cornerGap - beyond, from - cornerGap) / 8 +
                       overrun(line, to + cornerGap, to + cornerGap + beyond) / 8;
  }

  const std::vector<EdgeLine>& lines_;
  cv::Size picture_;
  const RectangleRequest& request_;
  double slack_;
  double leastSide_;
  // By two lines: where the second crosses the first, and the cosine of the angle between them.
  std::vector<double> crossing_;
  std::vector<double> cosine_;
  std::vector<Rung> rungs_;
  std::vector<Outline> found_;
};

}  // namespace

std::vector<Outline> findOutlines(const std::vector<EdgeLine>& lines, cv::Size picture, const RectangleRequest& request,
                                  std::size_t most) {
  std::vector<Outline> outlines = Search(lines, picture, request).run();
  std::vector<std::pair<double, std::size_t>> ranking;
  ranking.reserve(outlines.size());
  for (std::size_t i = 0; i < outlines.size(); ++i) ranking.emplace_back(-promise(outlines[i]), i);
  std::ranges::sort(ranking);
  std::vector<Outline> best;
  for (const auto& [promise, i] : ranking) {
    if (best.size() == most) break;
    const bool known =
        std::ranges::any_of(best, [&, index = i](const Outline& other) { return same(other, outlines[index]); });
    if (!known) best.push_back(outlines[i]);
  }
  return best;
}

}  // namespace pravik
