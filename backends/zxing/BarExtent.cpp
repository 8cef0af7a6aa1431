#include "backends/zxing/BarExtent.h"

#include <algorithm>

namespace pravik {
namespace {

/// Samples along a row: several for each of the narrowest bars.
constexpr int samples = 512;
/// Two neighbouring rows of bars correlate nearly fully; bars and what lies beyond them do not.
constexpr double leastCorrelation = 0.5;
/// Where the bars end their contrast goes.
constexpr double leastContrast = 0.5;

/// Grey levels along the row from `from` to `to`; false when it leaves the picture.
bool sampleRow(const cv::Mat& grey, cv::Point2d from, cv::Point2d to, cv::Mat1d& row) {
  const cv::Rect2d inside(0, 0, grey.cols, grey.rows);
  if (!inside.contains(from) || !inside.contains(to)) return false;
  for (int i = 0; i < samples; ++i) {
    const cv::Point2d at = from + (to - from) * (static_cast<double>(i) / (samples - 1));
    row(i) = grey.at<std::uint8_t>(static_cast<int>(at.y), static_cast<int>(at.x));
  }
  return true;
}

double contrast(const cv::Mat1d& row) {
  cv::Scalar mean, deviation;
  cv::meanStdDev(row, mean, deviation);
  return deviation[0];
}

double correlation(const cv::Mat1d& a, const cv::Mat1d& b) {
  const double scale = contrast(a) * contrast(b) * samples;
  return scale > 0 ? (a - cv::mean(a)[0]).dot(b - cv::mean(b)[0]) / scale : 0;
}

/// How many steps the row from `from` to `to` can be moved before it leaves the bars.
int stepsWithinBars(const cv::Mat& grey, cv::Point2d from, cv::Point2d to, cv::Point2d step) {
  cv::Mat1d previous(1, samples), next(1, samples);
  if (!sampleRow(grey, from, to, previous)) return 0;
  const double firstContrast = contrast(previous);
  for (int steps = 0;; ++steps) {
    const cv::Point2d offset = step * (steps + 1);
    if (!sampleRow(grey, from + offset, to + offset, next)) return steps;
    if (contrast(next) < leastContrast * firstContrast || correlation(previous, next) < leastCorrelation) return steps;
    cv::swap(previous, next);
  }
}

}  // namespace

CodeOutline grownAlongBars(const cv::Mat& grey, const CodeOutline& rows) {
  const cv::Point2d from = (rows[0] + rows[3]) / 2, to = (rows[1] + rows[2]) / 2;
  const double length = cv::norm(to - from);
  if (length < 1) return rows;
  const cv::Point2d step(-(to.y - from.y) / length, (to.x - from.x) / length);
  const cv::Point2d back = -step * stepsWithinBars(grey, from, to, -step);
  const cv::Point2d forth = step * stepsWithinBars(grey, from, to, step);
  return {from + back, to + back, to + forth, from + forth};
}

}  // namespace pravik
