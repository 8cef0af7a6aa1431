#include "backends/opencv/finder/Outline.h"

#include <algorithm>
#include <cmath>

namespace pravik {
namespace {

// Places along a side where its edge is looked for, from `firstShare` of the side to as far from its end: the rounded
// corners are left out.
constexpr int samples = 40;
// Colours averaged along the side at each of these places, against noise.
constexpr int averaged = 4;
constexpr double firstShare = 0.08;
// Steps across the side to either side of it, of half a pixel of the reduced picture.
constexpr int reach = 6;
// A weaker change of colour between two neighbouring steps is noise.
constexpr float leastChange = 1;
// An edge within this many steps is on the line.
constexpr double onLine = 0.8;
// Corner radius over length: 3.18 mm of 85.60 mm (ISO/IEC 7810).
constexpr double cornerRadius = 3.18 / 85.60;

}  // namespace

/// A side of an outline: the line and how well edges lie on it.
struct OutlineRefiner::Side {
  cv::Point2d point;
  cv::Point2d direction;
  double sharpSupport = 0;
};

/// Bilinear; beyond the border the nearest pixel.
OutlineRefiner::Color OutlineRefiner::colorAt(cv::Point2d point) const {
  // Corners count from the edge of the first pixel, pixels from its middle.
  const double x = std::clamp(point.x - 0.5, 0.0, picture_.cols - 1.0);
  const double y = std::clamp(point.y - 0.5, 0.0, picture_.rows - 1.0);
  const int left = std::min(static_cast<int>(x), std::max(0, picture_.cols - 2));
  const int top = std::min(static_cast<int>(y), std::max(0, picture_.rows - 2));
  const int right = std::min(left + 1, picture_.cols - 1), bottom = std::min(top + 1, picture_.rows - 1);
  const auto fx = static_cast<float>(x - left), fy = static_cast<float>(y - top);
  const int channels = picture_.channels();
  const std::uint8_t* upper = picture_.ptr(top);
  const std::uint8_t* lower = picture_.ptr(bottom);
  Color color;
  for (int c = 0; c < 3; ++c) {
    const int channel = channels == 1 ? 0 : c;
    const int l = left * channels + channel, r = right * channels + channel;
    color[c] = (1 - fy) * ((1 - fx) * upper[l] + fx * upper[r]) + fy * ((1 - fx) * lower[l] + fx * lower[r]);
  }
  return color;
}

/// Finds the sharpest change of colour across the side at every place, then fits a line to the changes by iteratively
/// reweighted least squares with Tukey's biweight (Holland and Welsch, 1977).
OutlineRefiner::Side OutlineRefiner::fitSide(cv::Point2d from, cv::Point2d to) const {
  const cv::Point2d direction = (to - from) / cv::norm(to - from);
  const cv::Point2d normal(-direction.y, direction.x);
  const double length = cv::norm(to - from), step = 0.25 * (scale_.x + scale_.y);
  const double spacing = length * (1 - 2 * firstShare) / (samples - 1);
  struct Edge {
    double t, offset;
    float change;
  };
  std::array<Edge, samples> edges{};
  for (int i = 0; i < samples; ++i) {
    const double t = length * firstShare + spacing * i;
    std::array<Color, 2 * reach + 1> profile;
    for (int j = -reach; j <= reach; ++j) {
      const cv::Point2d middle = from + t * direction + j * step * normal;
      Color sum;
      for (int k = 0; k < averaged; ++k)
        sum += colorAt(middle + (k - (averaged - 1) / 2.0) * (spacing / averaged) * direction);
      profile[static_cast<std::size_t>(j + reach)] = sum / averaged;
    }
    std::array<float, 2 * reach + 1> change{};
    for (std::size_t j = 1; j < 2 * reach; ++j)
      change[j] = static_cast<float>(cv::norm(profile[j + 1] - profile[j - 1]));
    const auto peak = static_cast<std::size_t>(std::ranges::max_element(change) - change.begin());
    double offset = static_cast<double>(peak) - reach;
    if (peak > 0 && peak < 2 * reach) {
      const double before = change[peak - 1], here = change[peak], after = change[peak + 1];
      const double bend = before - 2 * here + after;
      if (bend < -1e-6) offset += 0.5 * (before - after) / bend;
    }
    edges[static_cast<std::size_t>(i)] = {t - length / 2, offset, change[peak]};
  }

  double shift = 0, tilt = 0;
  for (int round = 0; round < 5; ++round) {
    const double width = round < 2 ? 4.0 : 2.0;
    double n = 1e-9, sumT = 0, sumO = 0, sumTT = 0, sumTO = 0;
    for (const Edge& edge : edges) {
      if (edge.change < leastChange) continue;
      const double residual = (edge.offset - shift - tilt * edge.t) / width;
      if (std::abs(residual) >= 1) continue;
      const double weight = (1 - residual * residual) * (1 - residual * residual) * std::min(edge.change, 40.0F);
      n += weight;
      sumT += weight * edge.t;
      sumO += weight * edge.offset;
      sumTT += weight * edge.t * edge.t;
      sumTO += weight * edge.t * edge.offset;
    }
    const double spread = n * sumTT - sumT * sumT;
    if (spread < 1e-6 * n * n * length * length) break;
    tilt = (n * sumTO - sumT * sumO) / spread;
    shift = (sumO - tilt * sumT) / n;
  }
  int onIt = 0;
  for (const Edge& edge : edges)
    onIt += edge.change >= leastChange && std::abs(edge.offset - shift - tilt * edge.t) <= onLine ? 1 : 0;
  const cv::Point2d along = direction + tilt * step * normal;
  return {.point = from + length / 2 * direction + shift * step * normal,
          .direction = along / cv::norm(along),
          .sharpSupport = static_cast<double>(onIt) / samples};
}

double OutlineRefiner::roundness(const Outline& outline) const {
  const auto& p = outline.corners;
  const double across = std::max(cv::norm(p[1] - p[0]), cv::norm(p[2] - p[3]));
  const double down = std::max(cv::norm(p[3] - p[0]), cv::norm(p[2] - p[1]));
  double sum = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const cv::Point2d corner = p[i], next = p[(i + 1) % 4], before = p[(i + 3) % 4];
    const bool along = (i % 2 == 0) == (across >= down);
    const double longer = along ? cv::norm(next - corner) : cv::norm(before - corner);
    const double shorter = along ? cv::norm(before - corner) : cv::norm(next - corner);
    const double shorterRadius = cornerRadius * outline.aspect;
    const cv::Point2d u =
        (next - corner) / cv::norm(next - corner) * (along ? cornerRadius * longer : shorterRadius * shorter);
    const cv::Point2d v =
        (before - corner) / cv::norm(before - corner) * (along ? shorterRadius * shorter : cornerRadius * longer);
    // On the diagonal, in radii of either axis: the tip is at 0, the arc at 1 - sqrt(1/2) = 0.29.
    const auto diagonal = [&](double share) { return colorAt(corner + share * (u + v)); };
    const Color desk = (diagonal(-0.25) + diagonal(-0.4)) / 2, card = (diagonal(0.7) + diagonal(0.9)) / 2;
    const Color contrast = desk - card;
    const float strength = contrast.dot(contrast);
    if (strength < leastChange * leastChange) continue;
    const auto likeDesk = [&](const Color& color) {
      return std::clamp(static_cast<double>((color - card).dot(contrast) / strength), 0.0, 1.0);
    };
    sum += likeDesk(diagonal(0.13)) - likeDesk(diagonal(0.45));
  }
  return sum / 4;
}

Outline OutlineRefiner::refine(const Outline& reduced) const {
  Outline outline = reduced;
  for (auto& corner : outline.corners) corner = {corner.x * scale_.x, corner.y * scale_.y};
  std::array<Side, 4> sides;
  for (std::size_t i = 0; i < 4; ++i) sides[i] = fitSide(outline.corners[i], outline.corners[(i + 1) % 4]);
  outline.leastSharpSupport = 1;
  for (std::size_t i = 0; i < 4; ++i) {
    const Side& before = sides[(i + 3) % 4];
    const Side& side = sides[i];
    const double sine = before.direction.cross(side.direction);
    const double t = (side.point - before.point).cross(side.direction) / (std::abs(sine) < 1e-9 ? 1e-9 : sine);
    outline.corners[i] = before.point + t * before.direction;
    outline.sharpSupport += side.sharpSupport / 4;
    outline.leastSharpSupport = std::min(outline.leastSharpSupport, side.sharpSupport);
  }
  setShape(outline, picture_.size());
  outline.roundness = roundness(outline);
  return outline;
}

}  // namespace pravik
