#include "backends/opencv/EdgeLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

namespace pravik {
namespace {

// Orientations of a line's normal: half a turn, because the normal may point to either side.
constexpr int orientations = EdgeMap::turn / 2;
// Pixels between the distances that lines are told apart by.
constexpr int distanceStep = 2;
// How far, in orientation steps, the gradient of an edge may be from the normal of its line: 7 degrees to vote,
// 20 degrees to lie along it.
constexpr int voteSpread = 5;
constexpr int alignedSpread = 14;
constexpr int leastVotes = 24;
// Peaks are taken sector by sector, so that wood or print, rich in lines of one orientation, leaves room for the
// others.
constexpr int sectors = 8;
constexpr std::size_t peaksPerSector = 24;
// A line must run along edges for this many pixels more than it does not.
constexpr int leastRun = 20;
// Lines closer than this in pixels, over the whole run of the weaker one, are the same.
constexpr double sameLine = 1.2;

/// Cosine and sine of every orientation.
const std::array<cv::Point2d, orientations>& normals() {
  static const auto table = [] {
    std::array<cv::Point2d, orientations> unit;
    for (int i = 0; i < orientations; ++i) {
      const double angle = (i + 0.5) * CV_PI / orientations;
      unit[static_cast<std::size_t>(i)] = {std::cos(angle), std::sin(angle)};
    }
    return unit;
  }();
  return table;
}

/// The whole positions along a line, `from` to `to`, that are inside a map; empty when `to` is below `from`.
struct Stretch {
  int from;
  int to;
};

Stretch insideMap(const EdgeMap& edges, cv::Point2d origin, cv::Point2d direction) {
  double from = -std::numeric_limits<double>::infinity(), to = std::numeric_limits<double>::infinity();
  const auto clip = [&](double start, double step, double low, double high) {
    if (std::abs(step) < 1e-9) {
      if (start < low || start > high) to = -std::numeric_limits<double>::infinity();
      return;
    }
    const double a = (low - start) / step, b = (high - start) / step;
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
  };
  clip(origin.x, direction.x, 0, edges.width() - 1);
  clip(origin.y, direction.y, 0, edges.height() - 1);
  if (!(from <= to)) return {0, -1};
  return {static_cast<int>(std::ceil(from)), static_cast<int>(std::floor(to))};
}

/// Tells which edges run along a line.
class Alignment {
 public:
  Alignment(const EdgeMap& edges, cv::Point2d normal) : edges_(edges) {
    const double angle = std::atan2(normal.y, normal.x) / (2 * CV_PI) * EdgeMap::turn;
    normalStep_ = static_cast<int>(std::floor(angle < 0 ? angle + EdgeMap::turn : angle));
  }

  /// 1 or -1 when an edge here runs along the line: whether its bright side is where the normal points. 0 when not.
  int signAt(cv::Point2d point) const {
    const int x = static_cast<int>(point.x + 0.5), y = static_cast<int>(point.y + 0.5);
    if (x < 0 || y < 0 || x >= edges_.width() || y >= edges_.height()) return 0;
    const int direction = edges_.row(y)[x];
    if (direction == 0) return 0;
    int difference = std::abs(direction - 1 - normalStep_);
    difference = std::min(difference, EdgeMap::turn - difference);
    if (difference <= alignedSpread) return 1;
    return difference >= orientations - alignedSpread ? -1 : 0;
  }

 private:
  const EdgeMap& edges_;
  int normalStep_ = 0;
};

/// The votes of all edges for lines by orientation and distance from the middle of the map.
class Accumulator {
 public:
  explicit Accumulator(const EdgeMap& edges)
      : middle_((edges.width() - 1) / 2.0, (edges.height() - 1) / 2.0),
        distances_(2 * static_cast<int>(std::ceil(cv::norm(middle_) / distanceStep)) + 3),
        votes_(static_cast<std::size_t>(orientations * distances_)) {
    for (int y = 0; y < edges.height(); ++y) {
      const std::uint8_t* row = edges.row(y);
      const std::uint8_t* strengths = edges.strengths(y);
      for (int x = 0; x < edges.width(); ++x)
        if (row[x] != 0) vote({x - middle_.x, y - middle_.y}, (row[x] - 1) % orientations, strengths[x]);
    }
  }

  struct Peak {
    int orientation;
    int distance;
    int votes;
  };

  std::vector<Peak> peaks() const {
    std::vector<Peak> found;
    for (int orientation = 0; orientation < orientations; ++orientation)
      for (int distance = 1; distance + 1 < distances_; ++distance)
        if (isPeak(orientation, distance)) found.push_back({orientation, distance, at(orientation, distance)});
    return found;
  }

  /// The point of a peak's line that is nearest to the middle of the map.
  cv::Point2d foot(const Peak& peak) const {
    return middle_ +
           distanceStep * (peak.distance - distances_ / 2) * normals()[static_cast<std::size_t>(peak.orientation)];
  }

 private:
  void vote(cv::Point2d point, int direction, int strength) {
    for (int spread = -voteSpread; spread <= voteSpread; ++spread) {
      const int orientation = (direction + spread + orientations) % orientations;
      const double distance = point.dot(normals()[static_cast<std::size_t>(orientation)]);
      const int bin = static_cast<int>(distance / distanceStep + distances_ / 2 + 0.5);
      votes_[static_cast<std::size_t>(orientation * distances_ + bin)] += static_cast<std::uint16_t>(strength);
    }
  }

  /// The votes of a line; beyond the last orientation the normal has turned round.
  int at(int orientation, int distance) const {
    if (orientation < 0 || orientation >= orientations) {
      orientation = (orientation + orientations) % orientations;
      distance = 2 * (distances_ / 2) - distance;
    }
    if (distance < 0 || distance >= distances_) return 0;
    return votes_[static_cast<std::size_t>(orientation * distances_ + distance)];
  }

  bool isPeak(int orientation, int distance) const {
    const int votes = votes_[static_cast<std::size_t>(orientation * distances_ + distance)];
    if (votes < leastVotes) return false;
    for (int o = -1; o <= 1; ++o) {
      for (int d = -1; d <= 1; ++d) {
        const bool before = o < 0 || (o == 0 && d < 0);
        const int other = at(orientation + o, distance + d);
        if (other > votes || (before && other == votes)) return false;
      }
    }
    return true;
  }

  cv::Point2d middle_;
  int distances_;
  std::vector<std::uint16_t> votes_;
};

/// A line with the stretch where edges run along it.
struct Run {
  cv::Point2d origin;
  cv::Point2d direction;
  int from = 0;
  int to = 0;
  /// Positions with an edge less those without.
  int score = 0;

  cv::Point2d start() const { return origin + from * direction; }
  cv::Point2d end() const { return origin + to * direction; }
  double distance(cv::Point2d point) const { return std::abs((point - origin).cross(direction)); }
};

/// The edges in a band along a rough line, as one bit for every pixel across the band.
class Band {
 public:
  /// Pixels that the band reaches to either side.
  static constexpr int reach = 6;

  Band(const EdgeMap& edges, cv::Point2d origin, cv::Point2d direction)
      : origin_(origin),
        direction_(direction),
        normal_(-direction.y, direction.x),
        stretch_(insideMap(edges, origin, direction)) {
    const Alignment alignment(edges, normal_);
    for (int position = stretch_.from; position <= stretch_.to; position += step) {
      std::uint32_t bits = 0;
      const cv::Point2d middle = origin + position * direction;
      for (int offset = -reach; offset <= reach; ++offset)
        if (alignment.signAt(middle + offset * normal_) != 0) bits |= 1U << static_cast<unsigned>(offset + reach);
      bits_.push_back(bits);
    }
  }

  /// The line in the band with the best run along edges, fitted to them by least squares; nothing when it is short.
  std::optional<Run> bestRun() const {
    std::vector<std::uint32_t> wide(bits_.size());
    std::transform(bits_.begin(), bits_.end(), wide.begin(),
                   [](std::uint32_t bits) { return bits | bits << 1U | bits >> 1U; });
    Stretch best{0, 0};
    double bestOffset = 0, bestSlope = 0;
    int bestScore = leastRun / step;
    for (int turn = -slopeSteps; turn <= slopeSteps; ++turn) {
      const double slope = turn * widestSlope / slopeSteps;
      for (int offset = -offsetReach; offset <= offsetReach; ++offset)
        if (scoreRun(wide, offset, slope, best, bestScore)) {
          bestOffset = offset;
          bestSlope = slope;
        }
    }
    if (bestScore <= leastRun / step) return std::nullopt;
    return fitted(best, bestScore, bestOffset, bestSlope);
  }

 private:
  // Every other position is enough.
  static constexpr int step = 2;
  // The true line is within half an orientation step and about a distance step of the rough one.
  static constexpr double widestSlope = 0.8 * CV_PI / orientations;
  static constexpr int slopeSteps = 3;
  static constexpr int offsetReach = 3;

  double positionOf(int index) const { return stretch_.from + step * index; }

  /// The stretch with the greatest excess of edges over gaps (Bentley, 1984) on one line; true when it is a new best.
  bool scoreRun(const std::vector<std::uint32_t>& bits, double offset, double slope, Stretch& best,
                int& bestScore) const {
    bool better = false;
    double across = offset + slope * positionOf(0) + reach + 0.5;
    const double change = slope * step;
    int start = 0, score = 0;
    const int n = static_cast<int>(bits.size());
    for (int i = 0; i < n; ++i, across += change) {
      const auto bit = static_cast<unsigned>(std::clamp(across, 0.0, 31.0));
      score += (bits[static_cast<std::size_t>(i)] >> bit & 1U) != 0 ? 1 : -1;
      if (score <= 0) {
        score = 0;
        start = i + 1;
      } else if (score > bestScore) {
        best = {start, i};
        bestScore = score;
        better = true;
      }
    }
    return better;
  }

  Run fitted(const Stretch& run, int score, double offset, double slope) const {
    double n = 0, sumT = 0, sumO = 0, sumTT = 0, sumTO = 0;
    const double middle = (positionOf(run.from) + positionOf(run.to)) / 2;
    for (int i = run.from; i <= run.to; ++i) {
      const double across = offset + slope * positionOf(i);
      const int nearest = static_cast<int>(std::lround(across));
      for (int o = std::max(nearest - 1, -reach); o <= std::min(nearest + 1, reach); ++o) {
        if ((bits_[static_cast<std::size_t>(i)] >> static_cast<unsigned>(o + reach) & 1U) == 0) continue;
        const double t = positionOf(i) - middle;
        n += 1;
        sumT += t;
        sumO += o;
        sumTT += t * t;
        sumTO += t * o;
      }
    }
    const double tilt = (n * sumTO - sumT * sumO) / std::max(1e-9, n * sumTT - sumT * sumT);
    const double shift = (sumO - tilt * sumT) / n;
    Run line{.origin = origin_ + middle * direction_ + shift * normal_, .direction = direction_ + tilt * normal_};
    line.direction /= cv::norm(line.direction);
    line.from = static_cast<int>(positionOf(run.from) - middle);
    line.to = static_cast<int>(positionOf(run.to) - middle);
    line.score = score * step;
    return line;
  }

  cv::Point2d origin_;
  cv::Point2d direction_;
  cv::Point2d normal_;
  Stretch stretch_;
  std::vector<std::uint32_t> bits_;
};

std::vector<Run> fitPeaks(const EdgeMap& edges) {
  const Accumulator accumulator(edges);
  std::array<std::vector<Accumulator::Peak>, sectors> bySector;
  for (const auto& peak : accumulator.peaks())
    bySector[static_cast<std::size_t>(peak.orientation * sectors / orientations)].push_back(peak);
  std::vector<Run> runs;
  for (auto& peaks : bySector) {
    std::sort(peaks.begin(), peaks.end(), [](const auto& a, const auto& b) { return a.votes > b.votes; });
    peaks.resize(std::min(peaks.size(), peaksPerSector));
    for (const auto& peak : peaks) {
      const cv::Point2d normal = normals()[static_cast<std::size_t>(peak.orientation)];
      const auto run = Band(edges, accumulator.foot(peak), {normal.y, -normal.x}).bestRun();
      if (run) runs.push_back(*run);
    }
  }
  return runs;
}

}  // namespace

EdgeLine::EdgeLine(const EdgeMap& edges, cv::Point2d point, cv::Point2d direction)
    : origin_(point), direction_(direction) {
  const Stretch stretch = insideMap(edges, point, direction);
  const Alignment alignment(edges, normal());
  origin_ = point + stretch.from * direction;
  supported_.assign(1, 0);
  signed_.assign(1, 0);
  for (int position = stretch.from; position <= stretch.to; ++position) {
    const cv::Point2d middle = point + position * direction;
    int sign = alignment.signAt(middle);
    if (sign == 0) sign = alignment.signAt(middle - normal());
    if (sign == 0) sign = alignment.signAt(middle + normal());
    supported_.push_back(supported_.back() + std::abs(sign));
    signed_.push_back(signed_.back() + sign);
  }
}

int EdgeLine::supported(double from, double to, const std::vector<int>& sums) const {
  const auto index = [&](double position) {
    return static_cast<std::size_t>(std::clamp(position + 0.5, 0.0, static_cast<double>(sums.size() - 1)));
  };
  return sums[index(to)] - sums[index(from)];
}

EdgeLine::Support EdgeLine::support(double from, double to) const {
  if (from > to) std::swap(from, to);
  const double length = std::max(1.0, to - from);
  return {.share = std::min(1.0, supported(from, to, supported_) / length),
          .polarity = std::clamp(supported(from, to, signed_) / length, -1.0, 1.0)};
}

cv::Point2d EdgeLine::intersection(const EdgeLine& other) const {
  const double sine = direction_.cross(other.direction_);
  const double position = (other.origin_ - origin_).cross(other.direction_) / (std::abs(sine) < 1e-9 ? 1e-9 : sine);
  return at(position);
}

std::vector<EdgeLine> findLines(const EdgeMap& edges) {
  std::vector<Run> runs = fitPeaks(edges);
  std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.score > b.score; });
  std::vector<Run> distinct;
  for (const Run& run : runs) {
    const bool known = std::any_of(distinct.begin(), distinct.end(), [&](const Run& other) {
      return other.distance(run.start()) < sameLine && other.distance(run.end()) < sameLine;
    });
    if (!known) distinct.push_back(run);
  }
  std::vector<EdgeLine> lines;
  lines.reserve(distinct.size());
  for (const Run& run : distinct) lines.emplace_back(edges, run.origin, run.direction);
  return lines;
}

}  // namespace pravik
