#include "backends/zxing/CodeRegions.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <opencv2/imgproc.hpp>

namespace pravik {
namespace {

/// Edges are measured on a picture of at most this many pixels on its longer side.
constexpr double analysisSide = 1600;
/// Side of a cell of the edge map, in pixels of that picture.
constexpr int cellSide = 8;
/// A cell counts as strong above this part of the strongest cells' energy.
constexpr double strongCell = 0.12;
/// Smallest region: less cannot hold a code at two pixels a module.
constexpr int minimumCells = 12;
/// Around a region, as a part of its longer side: room for the quiet zone.
constexpr double margin = 0.12;

struct EdgeMap {
  cv::Mat energy;    ///< mean squared gradient, one value a cell
  cv::Mat twofold;   ///< mean of the squared gradient as a complex number: doubles the angle
  cv::Mat fourfold;  ///< the same squared again and scaled: opposite and right angles fall together
};

/// Per pixel g = gx + i gy; |g|^2, g^2 and g^4 / |g|^2, averaged over cells.
EdgeMap edgeMap(const cv::Mat& grey) {
  cv::Mat gx, gy;
  cv::Sobel(grey, gx, CV_32F, 1, 0);
  cv::Sobel(grey, gy, CV_32F, 0, 1);
  cv::Mat energy(grey.size(), CV_32F), twofold(grey.size(), CV_32FC2), fourfold(grey.size(), CV_32FC2);
  for (int y = 0; y < grey.rows; ++y) {
    for (int x = 0; x < grey.cols; ++x) {
      const std::complex<float> g(gx.at<float>(y, x), gy.at<float>(y, x));
      const float norm = std::norm(g);
      const std::complex<float> g2 = g * g;
      const std::complex<float> g4 = norm > 0 ? g2 * g2 / norm : std::complex<float>();
      energy.at<float>(y, x) = norm;
      twofold.at<cv::Vec2f>(y, x) = {g2.real(), g2.imag()};
      fourfold.at<cv::Vec2f>(y, x) = {g4.real(), g4.imag()};
    }
  }
  const cv::Size cells(std::max(1, grey.cols / cellSide), std::max(1, grey.rows / cellSide));
  EdgeMap map;
  cv::resize(energy, map.energy, cells, 0, 0, cv::INTER_AREA);
  cv::resize(twofold, map.twofold, cells, 0, 0, cv::INTER_AREA);
  cv::resize(fourfold, map.fourfold, cells, 0, 0, cv::INTER_AREA);
  return map;
}

cv::Mat strongCells(const cv::Mat& energy) {
  cv::Mat smooth, sorted;
  cv::GaussianBlur(energy, smooth, {}, 1);
  cv::sort(smooth.reshape(1, 1), sorted, cv::SORT_EVERY_ROW | cv::SORT_DESCENDING);
  const float strongest = sorted.at<float>(sorted.cols / 200);
  cv::Mat strong = smooth > strongCell * strongest;
  cv::morphologyEx(strong, strong, cv::MORPH_OPEN, cv::getStructuringElement(cv::MORPH_RECT, {2, 2}));
  cv::morphologyEx(strong, strong, cv::MORPH_CLOSE, cv::getStructuringElement(cv::MORPH_RECT, {3, 3}));
  return strong;
}

/// The region that covers the labelled cells; extents are measured along its own axes.
CodeRegion regionOf(const EdgeMap& map, const cv::Mat& labels, int label, const cv::Rect& bounds, cv::Point2d cell) {
  std::complex<double> twofold, fourfold;
  double energy = 0;
  std::vector<cv::Point2d> centres;
  for (int y = bounds.y; y < bounds.y + bounds.height; ++y) {
    for (int x = bounds.x; x < bounds.x + bounds.width; ++x) {
      if (labels.at<int>(y, x) != label) continue;
      const auto two = map.twofold.at<cv::Vec2f>(y, x), four = map.fourfold.at<cv::Vec2f>(y, x);
      twofold += std::complex<double>(two[0], two[1]);
      fourfold += std::complex<double>(four[0], four[1]);
      energy += map.energy.at<float>(y, x);
      centres.emplace_back((x + 0.5) * cell.x, (y + 0.5) * cell.y);
    }
  }
  const double coherence = energy > 0 ? std::abs(twofold) / energy : 0;
  const double angle = coherence > barCoherence ? std::arg(twofold) / 2 : std::arg(fourfold) / 4;
  const cv::Point2d along(std::cos(angle), std::sin(angle)), across(-along.y, along.x);
  double left = HUGE_VAL, right = -HUGE_VAL, top = HUGE_VAL, bottom = -HUGE_VAL;
  for (const auto& centre : centres) {
    left = std::min(left, centre.dot(along)), right = std::max(right, centre.dot(along));
    top = std::min(top, centre.dot(across)), bottom = std::max(bottom, centre.dot(across));
  }
  const cv::Point2d centre = along * ((left + right) / 2) + across * ((top + bottom) / 2);
  const double side = std::max(cell.x, cell.y);
  return {cv::RotatedRect(centre, cv::Size2d(right - left + side, bottom - top + side),
                          static_cast<float>(angle * 180 / CV_PI)),
          coherence};
}

}  // namespace

std::vector<CodeRegion> findCodeRegions(const cv::Mat& grey, std::size_t maximum) {
  const double scale = std::min(1.0, analysisSide / std::max(grey.cols, grey.rows));
  cv::Mat small;
  cv::resize(grey, small, {std::max(1, cvRound(grey.cols * scale)), std::max(1, cvRound(grey.rows * scale))}, 0, 0,
             cv::INTER_AREA);
  const EdgeMap map = edgeMap(small);
  cv::Mat labels, statistics, centroids;
  const int count = cv::connectedComponentsWithStats(strongCells(map.energy), labels, statistics, centroids);

  std::vector<std::pair<double, int>> byEnergy;
  for (int label = 1; label < count; ++label)
    if (const int area = statistics.at<int>(label, cv::CC_STAT_AREA); area >= minimumCells)
      byEnergy.emplace_back(cv::mean(map.energy, labels == label)[0] * area, label);
  std::ranges::sort(byEnergy, std::greater{});
  if (byEnergy.size() > maximum) byEnergy.resize(maximum);

  const cv::Point2d cell(static_cast<double>(grey.cols) / labels.cols, static_cast<double>(grey.rows) / labels.rows);
  std::vector<CodeRegion> regions;
  for (const auto& [energy, label] : byEnergy) {
    const cv::Rect bounds(statistics.at<int>(label, cv::CC_STAT_LEFT), statistics.at<int>(label, cv::CC_STAT_TOP),
                          statistics.at<int>(label, cv::CC_STAT_WIDTH), statistics.at<int>(label, cv::CC_STAT_HEIGHT));
    regions.push_back(regionOf(map, labels, label, bounds, cell));
  }
  return regions;
}

PictureView cutRegion(const cv::Mat& grey, const CodeRegion& region, double scale) {
  const cv::RotatedRect& area = region.area;
  const double room = margin * std::max(area.size.width, area.size.height);
  const double width = area.size.width + 2 * room, height = area.size.height + 2 * room;
  const double angle = area.angle * CV_PI / 180;
  const cv::Matx33d centred(1, 0, -width / 2, 0, 1, -height / 2, 0, 0, 1);
  const cv::Matx33d turned(std::cos(angle), -std::sin(angle), area.center.x, std::sin(angle), std::cos(angle),
                           area.center.y, 0, 0, 1);
  const cv::Matx33d shrunk(1 / scale, 0, 0, 0, 1 / scale, 0, 0, 0, 1);

  PictureView view;
  view.toPicture = turned * centred * shrunk;
  const cv::Size size(std::max(1, cvRound(width * scale)), std::max(1, cvRound(height * scale)));
  cv::warpAffine(grey, view.grey, view.toPicture.get_minor<2, 3>(0, 0), size, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP,
                 cv::BORDER_REPLICATE);
  return view;
}

}  // namespace pravik
