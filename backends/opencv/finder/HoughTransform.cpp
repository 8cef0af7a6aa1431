#include "backends/opencv/finder/LineSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace pravik {
namespace {

// Orientations of a line's normal: half a turn, because the normal may point to either side.
constexpr int orientations = EdgeMap::turn / 2;
// How far the gradient of an edge may be from the normals of the lines that it votes for, in steps: 7 degrees.
constexpr int voteSpread = 5;
constexpr int leastVotes = 24;
// Peaks are taken sector by sector, so that wood or print, rich in lines of one orientation, leaves room for the
// others.
constexpr int sectors = 8;
constexpr std::size_t peaksPerSector = 24;

struct Peak {
  int orientation;
  int distance;
  int votes;
};

/// The votes of all edges for lines by orientation and distance from the middle of the map.
class Accumulator {
 public:
  explicit Accumulator(const EdgeMap& edges)
      : middle_((edges.width() - 1) / 2.0, (edges.height() - 1) / 2.0),
        zero_(static_cast<int>(std::ceil(cv::norm(middle_) / guessedDistanceStep)) + 1),
        distances_(2 * zero_ + 1),
        votes_(static_cast<std::size_t>(orientations * distances_)) {
    for (int orientation = 0; orientation < orientations; ++orientation) {
      const double angle = (orientation + 0.5) * guessedDirectionStep;
      normals_[static_cast<std::size_t>(orientation)] = cv::Point2d(std::cos(angle), std::sin(angle));
    }
    for (int y = 0; y < edges.height(); ++y) {
      const std::uint8_t* row = edges.row(y);
      const std::uint8_t* strengths = edges.strengths(y);
      for (int x = 0; x < edges.width(); ++x)
        if (row[x] != 0) vote(cv::Point2d(x, y) - middle_, (row[x] - 1) % orientations, strengths[x]);
    }
  }

  std::vector<Peak> peaks() const {
    std::vector<Peak> found;
    for (int orientation = 0; orientation < orientations; ++orientation)
      for (int distance = 1; distance + 1 < distances_; ++distance)
        if (isPeak(orientation, distance)) found.push_back({orientation, distance, at(orientation, distance)});
    return found;
  }

  LineGuess lineOf(const Peak& peak) const {
    const cv::Point2d normal = normals_[static_cast<std::size_t>(peak.orientation)];
    return {.point = middle_ + guessedDistanceStep * (peak.distance - zero_) * normal,
            .direction = {normal.y, -normal.x},
            .votes = peak.votes};
  }

 private:
  void vote(cv::Point2f point, int direction, int strength) {
    const cv::Point2f scaled = point / guessedDistanceStep;
    const float rounding = static_cast<float>(zero_) + 0.5F;
    for (int spread = -voteSpread; spread <= voteSpread; ++spread) {
      int orientation = direction + spread;
      orientation += orientation < 0 ? orientations : orientation >= orientations ? -orientations : 0;
      const int distance = static_cast<int>(scaled.dot(normals_[static_cast<std::size_t>(orientation)]) + rounding);
      votes_[static_cast<std::size_t>(orientation * distances_ + distance)] += static_cast<std::uint16_t>(strength);
    }
  }

  /// The votes of a line; beyond the first and last orientation the normal has turned round.
  int at(int orientation, int distance) const {
    if (orientation < 0 || orientation >= orientations) {
      orientation = (orientation + orientations) % orientations;
      distance = 2 * zero_ - distance;
    }
    return votes_[static_cast<std::size_t>(orientation * distances_ + distance)];
  }

  /// Whether none of the eight neighbours has more votes; of equal neighbours the first is the peak.
  bool isPeak(int orientation, int distance) const {
    const int votes = at(orientation, distance);
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
  int zero_;
  int distances_;
  std::vector<std::uint16_t> votes_;
  std::array<cv::Point2f, orientations> normals_;
};

}  // namespace

std::vector<LineGuess> guessLines(const EdgeMap& edges) {
  const Accumulator accumulator(edges);
  std::array<std::vector<Peak>, sectors> bySector;
  for (const Peak& peak : accumulator.peaks())
    bySector[static_cast<std::size_t>(peak.orientation * sectors / orientations)].push_back(peak);
  std::vector<LineGuess> guesses;
  for (auto& peaks : bySector) {
    std::ranges::sort(peaks, std::greater{}, &Peak::votes);
    peaks.resize(std::min(peaks.size(), peaksPerSector));
    for (const Peak& peak : peaks) guesses.push_back(accumulator.lineOf(peak));
  }
  return guesses;
}

}  // namespace pravik
