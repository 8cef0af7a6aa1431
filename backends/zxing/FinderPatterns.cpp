#include "backends/zxing/FinderPatterns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <span>
#include <vector>

namespace pravik {
namespace {

/// A pixel is dark when it is darker than what lies around it, so wide that dark and light of a large pattern are both
/// in view.
constexpr int surroundings = 101;
/// ZXing looks at pictures scaled down by this factor, too, while their shorter side is longer than this.
constexpr double downscaling = 3;
constexpr int leastSide = 500;
/// The middle of a pattern with modules of one pixel is so many rows high.
constexpr int rowStep = 3;
/// Modules of the runs of a pattern.
constexpr std::array<int, 5> modules{1, 1, 3, 1, 1};
constexpr int allModules = 7;
/// By how many modules a run may be too long or too short.
constexpr float tolerance = 0.5F;

bool isPattern(std::span<const int, modules.size()> runs) {
  const int length = std::accumulate(runs.begin(), runs.end(), 0);
  const float module = static_cast<float>(length) / allModules;
  for (std::size_t i = 0; i < modules.size(); ++i) {
    const float expected = module * static_cast<float>(modules[i]);
    if (std::abs(static_cast<float>(runs[i]) - expected) > tolerance * module) return false;
  }
  return true;
}

/// Length of the run from a pixel on in steps of a direction; it gives up at `most`.
int runFrom(const cv::Mat& dark, cv::Point at, cv::Point step, int most) {
  const cv::Rect inside({}, dark.size());
  if (!inside.contains(at)) return 0;
  const std::uint8_t value = dark.at<std::uint8_t>(at);
  int length = 0;
  for (; length < most && inside.contains(at) && dark.at<std::uint8_t>(at) == value; at += step) ++length;
  return length;
}

/// The runs of a pattern through a dark pixel, and how many steps it is from there to the middle of the third.
struct Cross {
  std::array<int, modules.size()> runs{};
  int toMiddle = 0;
};

Cross crossAt(const cv::Mat& dark, cv::Point pixel, cv::Point step, int most) {
  const int back = runFrom(dark, pixel, -step, most), on = runFrom(dark, pixel + step, step, most);
  const cv::Point before = pixel - back * step, after = pixel + (on + 1) * step;
  const int lightBefore = runFrom(dark, before, -step, most), lightAfter = runFrom(dark, after, step, most);
  return {{runFrom(dark, before - lightBefore * step, -step, most), lightBefore, back + on, lightAfter,
           runFrom(dark, after + lightAfter * step, step, most)},
          (on - (back - 1)) / 2};
}

/// Whether a pattern's middle is in this pixel, or in one of the rows next to it that are not looked at.
bool isMiddle(const cv::Mat& dark, cv::Point pixel, int width) {
  const Cross down = crossAt(dark, pixel, {0, 1}, width);
  const int height = std::accumulate(down.runs.begin(), down.runs.end(), 0);
  if (std::abs(down.toMiddle) > rowStep / 2 || !isPattern(down.runs)) return false;
  if (2 * height < width || height > 2 * width) return false;
  return isPattern(crossAt(dark, pixel + cv::Point(0, down.toMiddle), {1, 1}, width).runs);
}

/// The lengths of the runs of a row, the first of which is light, if only of no length.
void runsOfRow(const cv::Mat& dark, int y, std::vector<int>& runs) {
  const std::uint8_t* row = dark.ptr(y);
  runs.assign(1, 0);
  std::uint8_t current = 0;
  for (int x = 0; x < dark.cols; ++x) {
    if (row[x] != current) runs.push_back(0);
    current = row[x];
    ++runs.back();
  }
}

std::size_t countPatterns(const cv::Mat& dark) {
  std::size_t count = 0;
  std::vector<int> runs;
  for (int y = rowStep - 1; y < dark.rows; y += rowStep) {
    runsOfRow(dark, y, runs);
    int begin = runs[0];
    for (std::size_t i = 1; i + modules.size() <= runs.size(); i += 2) {
      const std::span<const int, modules.size()> five(&runs[i], modules.size());
      const cv::Point middle(begin + five[0] + five[1] + five[2] / 2, y);
      if (isPattern(five) && isMiddle(dark, middle, std::accumulate(five.begin(), five.end(), 0))) ++count;
      begin += five[0] + five[1];
    }
  }
  return count;
}

}  // namespace

bool hasMoreFinderPatterns(const cv::Mat& grey, std::size_t maximum) {
  for (cv::Mat level = grey;; cv::resize(level, level, {}, 1 / downscaling, 1 / downscaling, cv::INTER_AREA)) {
    cv::Mat mean;
    cv::blur(level, mean, {surroundings, surroundings});
    if (countPatterns(level < mean) > maximum) return true;
    if (std::min(level.cols, level.rows) <= leastSide) return false;
  }
}

}  // namespace pravik
