#include "backends/zxing/ZXingBarcodeDetector.h"

#include <ZXing/ZXVersion.h>
#include <algorithm>
#include <cmath>
#include <new>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

#include "Utils/Format.h"
#include "backends/opencv/Mat.h"
#include "backends/zxing/CodeReader.h"
#include "backends/zxing/CodeRegions.h"

namespace pravik {
namespace {

/// A larger picture is scaled down first: more pixels cost time and show no more of a code that fills a hand.
constexpr double maximumPixels = 16e6;
/// ZXing counts the pixels of a side in 16 bits.
constexpr double maximumSide = 32'000;
/// Longer side of the whole picture when it is looked at a second time, and once more when it is turned.
constexpr double secondLookSide = 1600;
constexpr double turnedSide = 1000;
/// ZXing itself sees codes up to about ten degrees off the axes.
constexpr double turns[] = {-15, 15, -30, 30, 45};
/// Regions that get a second look, and the longer side that each is scaled to.
constexpr std::size_t maximumRegions = 4;
constexpr double regionSide = 900;
constexpr double minimumRegionScale = 0.5, maximumRegionScale = 3;
/// Below this coherence a region holds no bars.
constexpr double leastBarCoherence = 0.3;
/// What counts as a label: nearly any rectangle, as it is only a frame to look into.
constexpr RectangleRequest labelRequest{.maximumObservations = 1, .minimumAspectRatio = 0.2F, .minimumSize = 0.1F};

using Formats = std::vector<const CodeFormat*>;
using Readings = std::vector<CodeReading>;

cv::Mat greyOf(const Bitmap& bitmap) {
  if (bitmap.format() == PixelFormat::grey8) return asMat(bitmap);
  cv::Mat grey;
  cv::cvtColor(asMat(bitmap), grey, cv::COLOR_BGRA2GRAY);
  return grey;
}

/// The whole picture, scaled down unless the scale is 1 or more.
PictureView shrunk(const cv::Mat& grey, double scale) {
  if (scale >= 1) return {grey};
  const cv::Size size(std::max(1, cvRound(grey.cols * scale)), std::max(1, cvRound(grey.rows * scale)));
  PictureView view;
  cv::resize(grey, view.grey, size, 0, 0, cv::INTER_AREA);
  view.toPicture =
      cv::Matx33d::diag({static_cast<double>(grey.cols) / size.width, static_cast<double>(grey.rows) / size.height, 1});
  return view;
}

double scaleToSide(const cv::Mat& grey, double side) {
  return side / std::max(grey.cols, grey.rows);
}

/// Evens out light and shadow.
cv::Mat evenedOut(const cv::Mat& grey) {
  cv::Mat even;
  cv::createCLAHE(4, {8, 8})->apply(grey, even);
  return even;
}

cv::Mat sharpened(const cv::Mat& grey, double radius) {
  cv::Mat blurred, sharp;
  cv::GaussianBlur(grey, blurred, {}, radius);
  cv::addWeighted(grey, 2.5, blurred, -1.5, 0, sharp);
  return sharp;
}

/// Bars that stand upright, averaged along themselves: noise goes, edges stay.
cv::Mat averagedAlongBars(const cv::Mat& grey) {
  cv::Mat smooth;
  cv::blur(grey, smooth, {1, std::max(3, grey.rows / 12)});
  return smooth;
}

/// What is looked for, and for how long.
struct Search {
  Formats formats;
  WorkLimit limit;
};

/// Reads every format once. The outlines are those of the picture.
Readings read(const PictureView& view, const Search& search) {
  Readings readings;
  for (const CodeFormat* format : search.formats) {
    auto reading = readCode(view.grey, *format, search.limit);
    if (!reading) continue;
    cv::perspectiveTransform(reading->outline, reading->outline, view.toPicture);
    readings.push_back(std::move(*reading));
  }
  return readings;
}

Search onlyLinear(Search search) {
  std::erase_if(search.formats, [](const CodeFormat* format) { return !isLinear(*format); });
  return search;
}

/// A region as it is, then with its noise, light or blur worked against.
Readings readRegion(const PictureView& view, double coherence, double scale, const Search& search) {
  const auto readAs = [&](cv::Mat grey, const Search& wanted) {
    return read({std::move(grey), view.toPicture}, wanted);
  };
  if (coherence >= leastBarCoherence) {
    const Search linear = onlyLinear(search);
    const cv::Mat smooth = averagedAlongBars(view.grey);
    for (const cv::Mat& bars : {smooth, evenedOut(smooth), sharpened(smooth, 3 * scale)})
      if (Readings readings = readAs(bars, linear); !readings.empty()) return readings;
  }
  if (Readings readings = readAs(evenedOut(view.grey), search); !readings.empty()) return readings;
  return readAs(sharpened(view.grey, 2 * scale), search);
}

Readings readRegions(const cv::Mat& grey, const Search& search) {
  const auto scaleOf = [](const CodeRegion& region) {
    const double side = std::max(region.area.size.width, region.area.size.height);
    return std::clamp(regionSide / side, minimumRegionScale, maximumRegionScale);
  };
  const std::vector<CodeRegion> regions = findCodeRegions(grey, maximumRegions);
  std::vector<PictureView> views;
  for (const CodeRegion& region : regions) {
    views.push_back(cutRegion(grey, region, scaleOf(region)));
    if (Readings readings = read(views.back(), search); !readings.empty()) return readings;
  }
  for (std::size_t i = 0; i < regions.size(); ++i) {
    Readings readings = readRegion(views[i], regions[i].coherence, scaleOf(regions[i]), search);
    if (!readings.empty()) return readings;
  }
  return {};
}

Readings readEvenedOut(const cv::Mat& grey, const Search& search) {
  PictureView view = shrunk(grey, scaleToSide(grey, secondLookSide));
  view.grey = evenedOut(view.grey);
  return read(view, search);
}

Readings readTurned(const cv::Mat& grey, const Search& search) {
  const PictureView small = shrunk(grey, scaleToSide(grey, turnedSide));
  const cv::Size2f size(small.grey.size());
  for (const double degrees : turns) {
    const CodeRegion whole{{{size.width / 2, size.height / 2}, size, static_cast<float>(degrees)}};
    PictureView view = cutRegion(small.grey, whole, 1);
    view.toPicture = small.toPicture * view.toPicture;
    if (Readings readings = read(view, search); !readings.empty()) return readings;
  }
  return {};
}

cv::Point2f pixelOf(const Point& point, const Bitmap& bitmap) {
  const Point pixel = inPixels(flipped(point), bitmap.size());
  return {static_cast<float>(pixel.x), static_cast<float>(pixel.y)};
}

/// The label that the code stands on, seen from straight above.
Readings readStraightened(const Bitmap& bitmap, const Search& search, const RectangleDetector& detector,
                          const ImageRenderer& renderer) {
  const auto labels = detector.detect(bitmap, labelRequest);
  if (labels.empty()) return {};
  const Quadrilateral& corners = labels.front().corners;
  const ImageFilter filter = PerspectiveCorrection{inPixels(corners, bitmap.size())};
  const auto straight = renderer.render(bitmap, {&filter, 1});
  if (!straight) return {};

  const auto width = static_cast<float>(straight->width()), height = static_cast<float>(straight->height());
  const cv::Point2f from[] = {{0, 0}, {width, 0}, {0, height}, {width, height}};
  const cv::Point2f to[] = {pixelOf(corners.topLeft, bitmap), pixelOf(corners.topRight, bitmap),
                            pixelOf(corners.bottomLeft, bitmap), pixelOf(corners.bottomRight, bitmap)};
  return read({greyOf(*straight), cv::getPerspectiveTransform(from, to)}, search);
}

/// The smallest upright rectangle around the outline, normalised with the origin at the lower left.
Rect boundingBox(const CodeOutline& outline, const Bitmap& bitmap) {
  const auto [left, right] = std::ranges::minmax(outline, {}, &cv::Point2d::x);
  const auto [top, bottom] = std::ranges::minmax(outline, {}, &cv::Point2d::y);
  const auto part = [](double value, int whole) { return std::clamp(value / whole, 0.0, 1.0); };
  const double x = part(left.x, bitmap.width()), y = 1 - part(bottom.y, bitmap.height());
  return {x, y, part(right.x, bitmap.width()) - x, 1 - part(top.y, bitmap.height()) - y};
}

bool overlap(const Rect& a, const Rect& b) {
  return a.x <= b.x + b.width && b.x <= a.x + a.width && a.y <= b.y + b.height && b.y <= a.y + a.height;
}

/// A less trustworthy reading at the place of another is a misreading of the same code.
std::vector<BarcodeObservation> withoutMisreadings(Readings readings, const Bitmap& bitmap) {
  std::vector<BarcodeObservation> kept;
  for (CodeReading& reading : readings) {
    const Rect box = boundingBox(reading.outline, bitmap);
    if (std::ranges::none_of(kept, [&](const auto& other) { return overlap(box, other.boundingBox); }))
      kept.push_back({std::move(reading.payload), std::move(reading.symbology), box});
  }
  return kept;
}

Readings readPicture(const Bitmap& bitmap, const Search& search) {
  const double area = static_cast<double>(bitmap.width()) * bitmap.height();
  const double scale =
      std::min(std::sqrt(maximumPixels / area), maximumSide / std::max(bitmap.width(), bitmap.height()));
  const PictureView picture = shrunk(greyOf(bitmap), scale);
  Readings readings = read({picture.grey}, search);
  for (const auto look : {readRegions, readEvenedOut, readTurned})
    if (readings.empty() && !search.limit.isSpent()) readings = look(picture.grey, search);
  for (CodeReading& reading : readings) cv::perspectiveTransform(reading.outline, reading.outline, picture.toPicture);
  return readings;
}

}  // namespace

ZXingBarcodeDetector::ZXingBarcodeDetector(std::shared_ptr<const RectangleDetector> rectangleDetector,
                                           std::shared_ptr<const ImageRenderer> renderer)
    : rectangleDetector_(std::move(rectangleDetector)), renderer_(std::move(renderer)) {}

std::vector<BarcodeObservation> ZXingBarcodeDetector::detect(const Bitmap& bitmap,
                                                             std::span<const BarcodeSymbology> symbologies,
                                                             const WorkLimit& limit) const {
  const Search search{codeFormats(symbologies), limit};
  if (search.formats.empty()) return {};
  try {
    Readings readings = readPicture(bitmap, search);
    if (readings.empty() && !limit.isSpent() && rectangleDetector_ && renderer_)
      readings = readStraightened(bitmap, search, *rectangleDetector_, *renderer_);
    return withoutMisreadings(std::move(readings), bitmap);
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) throw std::bad_alloc();
    throw std::runtime_error("the picture could not be searched for codes: " + error.err);
  }
}

std::string ZXingBarcodeDetector::libraryVersion() {
  return formatted("{}.{}.{}", ZXING_VERSION_MAJOR, ZXING_VERSION_MINOR, ZXING_VERSION_PATCH);
}

}  // namespace pravik
