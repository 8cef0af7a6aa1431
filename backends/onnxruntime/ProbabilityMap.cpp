#include "backends/onnxruntime/ProbabilityMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <utility>

namespace pravik::ppocr {
namespace {

/// A pixel above this belongs to text.
constexpr double pixelThreshold = 0.3;
/// A box whose pixels are less likely than this on average is noise.
constexpr double boxThreshold = 0.6;
/// A box about as wide as high needs more: patterns of a background make such boxes, and a lone character is sure.
constexpr double squareBoxThreshold = 0.7;
constexpr float squareAspect = 1.8F;
/// How far a core grows back to its line. Less would cut the outer strokes of a lone character.
constexpr float growth = 1.8F;
/// Parts of a line: how far their middles may lie apart across it, in heights, and how much their heights may differ.
constexpr float maximumRowOffset = 0.35F;
constexpr float maximumHeightRatio = 2.0F;
/// A core thinner than this many pixels of the map is noise.
constexpr float minimumCoreSide = 3;
/// Cores that are looked into, the largest: a dense page has some hundred. All are compared with all, so that a picture
/// strewn with dots would cost seconds.
constexpr std::size_t maximumCores = 1000;

using Contour = std::vector<cv::Point>;

double meanInside(const cv::Mat& map, const Contour& contour) {
  const cv::Rect area = cv::boundingRect(contour);
  cv::Mat mask = cv::Mat::zeros(area.size(), CV_8U);
  cv::fillPoly(mask, std::vector{contour}, cv::Scalar(1), cv::LINE_8, 0, -area.tl());
  return cv::mean(map(area), mask)[0];
}

void keepLargest(std::vector<Contour>& contours) {
  if (contours.size() <= maximumCores) return;
  std::ranges::stable_sort(contours, std::greater{},
                           [](const Contour& contour) { return cv::boundingRect(contour).area(); });
  contours.resize(maximumCores);
}

/// How far a core grows on each side.
float growthDistance(const cv::RotatedRect& core) {
  const auto [width, height] = core.size;
  return width * height * growth / (2 * (width + height));
}

float shortSide(const cv::RotatedRect& area) {
  return std::min(area.size.width, area.size.height);
}
float longSide(const cv::RotatedRect& area) {
  return std::max(area.size.width, area.size.height);
}

/// The middle of a line, or of a part of one, as the map shows it.
struct Core {
  cv::RotatedRect area;
  /// The map's mean inside.
  double score;
};

bool isText(const Core& core) {
  const bool isSquare = longSide(core.area) < squareAspect * shortSide(core.area);
  return core.score >= (isSquare ? squareBoxThreshold : boxThreshold);
}

/// The direction in which a core is long.
cv::Point2f direction(const cv::RotatedRect& area) {
  const double turn = area.size.width >= area.size.height ? 0 : CV_PI / 2;
  const double angle = area.angle * CV_PI / 180 + turn;
  return {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
}

/// Whether two cores are parts of one line: as high, beside each other, and so close that the grown boxes overlap.
/// Cut apart, both would read the character between them.
bool areOneLine(const Core& a, const Core& b) {
  const Core& longer = longSide(a.area) >= longSide(b.area) ? a : b;
  const Core& other = &longer == &a ? b : a;
  const cv::Point2f along = direction(longer.area);
  const cv::Point2f between = other.area.center - longer.area.center;
  const float height = shortSide(longer.area);
  const float across = std::abs(between.x * along.y - between.y * along.x);
  if (across > maximumRowOffset * height) return false;

  // The other core may be too short to have a direction of its own: only its extent along and across this one counts.
  std::array<cv::Point2f, 4> points;
  other.area.points(points.data());
  float nearest = std::numeric_limits<float>::max(), lowest = nearest, highest = -nearest;
  for (const cv::Point2f& point : points) {
    const cv::Point2f offset = point - longer.area.center;
    nearest = std::min(nearest, std::abs(offset.dot(along)));
    const float depth = offset.x * along.y - offset.y * along.x;
    lowest = std::min(lowest, depth);
    highest = std::max(highest, depth);
  }
  const float otherHeight = highest - lowest;
  if (std::max(height, otherHeight) > maximumHeightRatio * std::min(height, otherHeight)) return false;
  const float gap = nearest - longSide(longer.area) / 2;
  return gap < growthDistance(longer.area) + growthDistance(other.area);
}

Core together(const Core& a, const Core& b) {
  std::array<cv::Point2f, 8> points;
  a.area.points(points.data());
  b.area.points(points.data() + 4);
  const double weightA = a.area.size.area();
  const double weightB = b.area.size.area();
  return {cv::minAreaRect(points), (a.score * weightA + b.score * weightB) / (weightA + weightB)};
}

/// The cores with the parts of a line put together.
std::vector<Core> joined(std::vector<Core> cores) {
  for (std::size_t i = 0; i < cores.size(); ++i) {
    for (std::size_t j = i + 1; j < cores.size();) {
      if (!areOneLine(cores[i], cores[j])) {
        ++j;
        continue;
      }
      cores[i] = together(cores[i], cores[j]);
      cores.erase(cores.begin() + static_cast<std::ptrdiff_t>(j));
      // The longer line may now reach a part that was passed over.
      j = i + 1;
    }
  }
  return cores;
}

}  // namespace

cv::RotatedRect grown(const cv::RotatedRect& core) {
  const auto [width, height] = core.size;
  const float distance = growthDistance(core);
  return {core.center, {width + 2 * distance, height + 2 * distance}, core.angle};
}

std::vector<TextBox> boxesOf(const cv::Mat& map) {
  const cv::Mat text = map > pixelThreshold;
  std::vector<Contour> contours;
  cv::findContours(text, contours, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
  keepLargest(contours);
  std::vector<Core> cores;
  for (const auto& contour : contours) {
    const cv::RotatedRect area = cv::minAreaRect(contour);
    if (shortSide(area) >= minimumCoreSide) cores.push_back({area, meanInside(map, contour)});
  }
  std::vector<TextBox> boxes;
  for (const Core& core : joined(std::move(cores)))
    if (isText(core)) boxes.push_back({orderedCorners(grown(core.area)), static_cast<float>(core.score)});
  return boxes;
}

}  // namespace pravik::ppocr
