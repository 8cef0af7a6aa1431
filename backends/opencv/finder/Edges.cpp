#include "backends/opencv/finder/Edges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace pravik {
namespace {

// The typical gradient of a channel, what texture and noise give it, is taken to be at least this: two grey levels
// across the 3 x 3 Sobel kernel; and at most this, so that a picture full of detail keeps its edges.
constexpr int leastTypicalGradient = 8;
constexpr int greatestTypicalGradient = 60;
// An edge is this many times as strong as the typical gradient of its channel.
constexpr double edgeOverTypical = 1.3;
// Magnitudes are counted in this part of the typical gradient of their channel.
constexpr int magnitudeUnit = 32;
constexpr int greatestStrength = 4;
// Pixels along the border of the picture that are left out: scans and edited photos often have a frame there.
constexpr int frame = 4;

/// Luma and two colour differences, all of 8 bits: what a desk has in one of them often leaves the others alone.
std::vector<cv::Mat> opponentChannels(const cv::Mat& bgr) {
  std::vector<cv::Mat> channels(3);
  for (auto& channel : channels) channel.create(bgr.size(), CV_8UC1);
  for (int y = 0; y < bgr.rows; ++y) {
    const std::uint8_t* __restrict pixel = bgr.ptr(y);
    std::uint8_t* __restrict luma = channels[0].ptr(y);
    std::uint8_t* __restrict redBlue = channels[1].ptr(y);
    std::uint8_t* __restrict greenMagenta = channels[2].ptr(y);
    for (int x = 0; x < bgr.cols; ++x, pixel += 3) {
      const int blue = pixel[0], green = pixel[1], red = pixel[2];
      luma[x] = static_cast<std::uint8_t>((red + 2 * green + blue + 2) / 4);
      redBlue[x] = static_cast<std::uint8_t>((red - blue + 256) / 2);
      greenMagenta[x] = static_cast<std::uint8_t>((2 * green - red - blue + 512) / 4);
    }
  }
  return channels;
}

struct Gradient {
  cv::Mat dx, dy;     // CV_16SC1
  cv::Mat magnitude;  // CV_16SC1: the sum of the absolute values in parts of the channel's typical gradient
};

/// The median of the magnitude, sampled, within the limits.
int typicalGradient(const cv::Mat& dx, const cv::Mat& dy) {
  std::array<int, greatestTypicalGradient + 1> histogram{};
  int samples = 0;
  for (int y = 0; y < dx.rows; y += 4) {
    const auto* rowX = dx.ptr<short>(y);
    const auto* rowY = dy.ptr<short>(y);
    for (int x = 0; x < dx.cols; x += 4, ++samples)
      ++histogram[static_cast<std::size_t>(std::min(std::abs(rowX[x]) + std::abs(rowY[x]), greatestTypicalGradient))];
  }
  int median = 0;
  for (int below = histogram[0]; 2 * below < samples && median < greatestTypicalGradient;)
    below += histogram[static_cast<std::size_t>(++median)];
  return std::max(median, leastTypicalGradient);
}

/// For every pixel the gradient of the channel in which it stands out most.
Gradient strongestGradient(const cv::Mat& picture) {
  cv::Mat smooth;
  cv::GaussianBlur(picture, smooth, {5, 5}, 1.0);
  Gradient best;
  best.dx.create(picture.size(), CV_16SC1);
  best.dy.create(picture.size(), CV_16SC1);
  best.magnitude = cv::Mat::zeros(picture.size(), CV_16SC1);
  cv::Mat channelDx, channelDy;
  for (const cv::Mat& channel : opponentChannels(smooth)) {
    cv::spatialGradient(channel, channelDx, channelDy);
    const float scale = static_cast<float>(magnitudeUnit) / static_cast<float>(typicalGradient(channelDx, channelDy));
    for (int y = 0; y < picture.rows; ++y) {
      const auto* __restrict dx = channelDx.ptr<short>(y);
      const auto* __restrict dy = channelDy.ptr<short>(y);
      auto* __restrict bestDx = best.dx.ptr<short>(y);
      auto* __restrict bestDy = best.dy.ptr<short>(y);
      auto* __restrict magnitude = best.magnitude.ptr<short>(y);
      for (int x = 0; x < picture.cols; ++x) {
        const auto here = static_cast<short>(static_cast<float>(std::abs(dx[x]) + std::abs(dy[x])) * scale);
        const bool stronger = here > magnitude[x];
        magnitude[x] = stronger ? here : magnitude[x];
        bestDx[x] = stronger ? dx[x] : bestDx[x];
        bestDy[x] = stronger ? dy[x] : bestDy[x];
      }
    }
  }
  return best;
}

std::uint8_t directionOf(int dx, int dy) {
  const float degrees = cv::fastAtan2(static_cast<float>(dy), static_cast<float>(dx));
  return static_cast<std::uint8_t>(1 +
                                   std::min(EdgeMap::turn - 1, static_cast<int>(degrees * (EdgeMap::turn / 360.0F))));
}

// How far the gradient of an edge may be from the normal of its line, in steps: 20 degrees.
constexpr int alignmentTolerance = 14;

using Signs = std::array<std::int8_t, EdgeMap::turn + 1>;

/// For lines of every normal, by steps, the signs of every value of an edge map.
const std::array<Signs, EdgeMap::turn>& allSigns() {
  static const auto table = [] {
    std::array<Signs, EdgeMap::turn> signs{};
    for (int normal = 0; normal < EdgeMap::turn; ++normal) {
      for (int direction = 0; direction < EdgeMap::turn; ++direction) {
        int difference = std::abs(direction - normal);
        difference = std::min(difference, EdgeMap::turn - difference);
        const int sign = difference <= alignmentTolerance                       ? 1
                         : difference >= EdgeMap::turn / 2 - alignmentTolerance ? -1
                                                                                : 0;
        signs[static_cast<std::size_t>(normal)][static_cast<std::size_t>(direction + 1)] =
            static_cast<std::int8_t>(sign);
      }
    }
    return signs;
  }();
  return table;
}

}  // namespace

EdgeMap::EdgeMap(const cv::Mat& picture)
    : directions_(picture.rows + 2 * margin, picture.cols + 2 * margin, CV_8UC1, cv::Scalar(0)),
      strengths_(picture.size(), CV_8UC1) {
  const Gradient gradient = strongestGradient(picture);
  constexpr int threshold = static_cast<int>(edgeOverTypical * magnitudeUnit);
  const auto stride = static_cast<std::ptrdiff_t>(gradient.magnitude.step1());
  for (int y = frame; y + frame < picture.rows; ++y) {
    const auto* dx = gradient.dx.ptr<short>(y);
    const auto* dy = gradient.dy.ptr<short>(y);
    const auto* magnitude = gradient.magnitude.ptr<short>(y);
    std::uint8_t* direction = directions_.ptr(y + margin) + margin;
    std::uint8_t* strength = strengths_.ptr(y);
    for (int x = frame; x + frame < picture.cols; ++x) {
      if (magnitude[x] < threshold) continue;
      // The neighbour across the edge: straight when one component is at least tan(67.5 degrees) times the other.
      const int ax = std::abs(dx[x]), ay = std::abs(dy[x]);
      const std::ptrdiff_t stepX = 2 * ay > 5 * ax ? 0 : 1;
      const std::ptrdiff_t stepY = 2 * ax > 5 * ay ? 0 : ((dx[x] < 0) == (dy[x] < 0) ? stride : -stride);
      const short* here = magnitude + x;
      if (here[0] <= here[-stepX - stepY] || here[0] < here[stepX + stepY]) continue;
      direction[x] = directionOf(dx[x], dy[x]);
      strength[x] = static_cast<std::uint8_t>(std::min(here[0] / threshold, greatestStrength));
    }
  }
}

EdgeAlignment::EdgeAlignment(const EdgeMap& edges, cv::Point2d direction) : edges_(&edges) {
  const double steps = std::atan2(direction.x, -direction.y) / (2 * CV_PI) * EdgeMap::turn;
  const int normal = static_cast<int>(std::floor(steps < 0 ? steps + EdgeMap::turn : steps)) % EdgeMap::turn;
  signs_ = allSigns()[static_cast<std::size_t>(normal)].data();
}

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
