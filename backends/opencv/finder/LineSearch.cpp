#include "backends/opencv/finder/LineSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace pravik {
namespace {

// A line must run along edges for this many pixels more than it does not.
constexpr int leastRun = 20;
// Lines closer than this in pixels, over the whole run of the weaker one, are the same.
constexpr double sameLine = 1.2;

/// A line with the stretch where edges run along it.
struct Run {
  cv::Point2d origin;
  cv::Point2d direction;
  Stretch stretch;
  /// Positions with an edge less those without.
  int score = 0;

  cv::Point2d start() const { return origin + stretch.from * direction; }
  cv::Point2d end() const { return origin + stretch.to * direction; }
  double distance(cv::Point2d point) const { return std::abs((point - origin).cross(direction)); }
};

/// The edges in a band along a guessed line, as one bit for every pixel across the band.
class Band {
 public:
  Band(const EdgeMap& edges, const LineGuess& guess)
      : origin_(guess.point),
        direction_(guess.direction),
        normal_(-direction_.y, direction_.x),
        stretch_(stretchOnMap(edges, origin_, direction_)) {
    const EdgeAlignment alignment(edges, direction_);
    const cv::Point2f across = normal_;
    for (int position = stretch_.from; position <= stretch_.to; position += step) {
      std::uint32_t bits = 0;
      cv::Point2f point = origin_ + position * direction_ - reach * normal_;
      for (int bit = 0; bit <= 2 * reach; ++bit, point += across)
        bits |= static_cast<std::uint32_t>(alignment.signAt(point) != 0) << static_cast<unsigned>(bit);
      bits_.push_back(bits);
    }
  }

  /// The line in the band with the best run along edges, fitted to them by least squares; nothing when it is short.
  std::optional<Run> bestRun() const {
    Slanted best{.score = leastRun / step};
    for (int turn = -slopeSteps; turn <= slopeSteps; ++turn) searchSlope(turn * widestSlope / slopeSteps, best);
    if (best.score <= leastRun / step) return std::nullopt;
    return fitted(best, longestRun(best));
  }

 private:
  // Pixels that the band reaches to either side.
  static constexpr int reach = 6;
  // Every other position is enough.
  static constexpr int step = 2;
  // Slants of the true line against the guess, and its distances from the guess in the middle, that are tried.
  static constexpr double widestSlope = 0.8 * guessedDirectionStep;
  static constexpr int slopeSteps = 3;
  static constexpr int offsetReach = 3;
  static constexpr int offsets = 8;

  /// A line in the band.
  struct Slanted {
    int offset = 0;
    double slope = 0;
    int score = 0;
  };

  /// What a position adds to the score of the lines at every offset: 1 with an edge on the line or beside it, else -1.
  using Gains = std::array<std::int16_t, offsets>;

  static constexpr std::uint32_t windows = 1U << (offsets + 2);

  static const std::array<Gains, windows>& gains() {
    static const auto table = [] {
      std::array<Gains, windows> all{};
      for (std::uint32_t bits = 0; bits < windows; ++bits)
        for (unsigned offset = 0; offset < offsets; ++offset) all[bits][offset] = (bits >> offset & 7U) != 0 ? 1 : -1;
      return all;
    }();
    return table;
  }

  double positionOf(int index) const { return stretch_.from + step * index; }

  /// Whole pixels that a line of that slope has moved across the band at a position.
  int drift(int index, double slope) const {
    constexpr int upwards = 64;  // so that cutting off the fraction rounds down
    return static_cast<int>(slope * positionOf(index) + (upwards + 0.5)) - upwards;
  }

  /// The bits around a line of that slope at a position, the bits of the least offset lowest.
  std::uint32_t window(int index, double slope) const {
    const int lowest = reach - offsetReach - 1 + drift(index, slope);
    const std::uint32_t bits = bits_[static_cast<std::size_t>(index)];
    const std::uint32_t moved =
        lowest >= 0 ? bits >> static_cast<unsigned>(lowest) : bits << static_cast<unsigned>(-lowest);
    return moved & (windows - 1);
  }

  /// The greatest excess of edges over gaps on any stretch (Bentley, 1984), for the lines of one slope at all offsets.
  void searchSlope(double slope, Slanted& best) const {
    Gains score{}, greatest{};
    const auto& table = gains();
    for (int i = 0; i < static_cast<int>(bits_.size()); ++i) {
      const Gains& gain = table[window(i, slope)];
      for (std::size_t k = 0; k < offsets; ++k) {
        score[k] = std::max<std::int16_t>(static_cast<std::int16_t>(score[k] + gain[k]), 0);
        greatest[k] = std::max(greatest[k], score[k]);
      }
    }
    for (int k = 0; k < 2 * offsetReach + 1; ++k)
      if (greatest[static_cast<std::size_t>(k)] > best.score)
        best = {.offset = k - offsetReach, .slope = slope, .score = greatest[static_cast<std::size_t>(k)]};
  }

  /// The indices of the stretch with the greatest excess on one line.
  Stretch longestRun(const Slanted& line) const {
    Stretch best;
    const auto column = static_cast<std::size_t>(line.offset + offsetReach);
    for (int i = 0, start = 0, score = 0, greatest = 0; i < static_cast<int>(bits_.size()); ++i) {
      score += gains()[window(i, line.slope)][column];
      if (score <= 0) {
        score = 0;
        start = i + 1;
      } else if (score > greatest) {
        greatest = score;
        best = {start, i};
      }
    }
    return best;
  }

  Run fitted(const Slanted& line, const Stretch& run) const {
    double n = 0, sumT = 0, sumO = 0, sumTT = 0, sumTO = 0;
    const double middle = (positionOf(run.from) + positionOf(run.to)) / 2;
    for (int i = run.from; i <= run.to; ++i) {
      const std::uint32_t bits = window(i, line.slope) >> static_cast<unsigned>(line.offset + offsetReach);
      const double across = line.offset + drift(i, line.slope);
      for (int beside = -1; beside <= 1; ++beside) {
        if ((bits >> static_cast<unsigned>(beside + 1) & 1U) == 0) continue;
        const double t = positionOf(i) - middle, offset = across + beside;
        n += 1;
        sumT += t;
        sumO += offset;
        sumTT += t * t;
        sumTO += t * offset;
      }
    }
    const double tilt = (n * sumTO - sumT * sumO) / std::max(1e-9, n * sumTT - sumT * sumT);
    const double shift = (sumO - tilt * sumT) / n;
    const cv::Point2d direction = direction_ + tilt * normal_;
    return {.origin = origin_ + middle * direction_ + shift * normal_,
            .direction = direction / cv::norm(direction),
            .stretch = {static_cast<int>(positionOf(run.from) - middle), static_cast<int>(positionOf(run.to) - middle)},
            .score = line.score};
  }

  cv::Point2d origin_;
  cv::Point2d direction_;
  cv::Point2d normal_;
  Stretch stretch_;
  std::vector<std::uint32_t> bits_;
};

}  // namespace

std::vector<EdgeLine> findLines(const EdgeMap& edges) {
  std::vector<Run> runs;
  for (const LineGuess& guess : guessLines(edges))
    if (const auto run = Band(edges, guess).bestRun()) runs.push_back(*run);
  std::ranges::sort(runs, [](const Run& a, const Run& b) { return a.score > b.score; });

  std::vector<Run> distinct;
  for (const Run& run : runs) {
    const bool known = std::ranges::any_of(distinct, [&](const Run& other) {
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
