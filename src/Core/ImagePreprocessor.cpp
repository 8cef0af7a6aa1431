#include "Core/ImagePreprocessor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Utils/Format.h"
#include "Utils/GuardedCall.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

using Stats = ImagePreprocessor::Stats;
using Scene = ImagePreprocessor::Scene;
using AdaptiveParams = ImagePreprocessor::AdaptiveParams;

constexpr int thumbnailSide = 64;
constexpr Stats ordinaryStats{0.5, 0.2, 0.2, 0.2};
constexpr double darkBelow = 0.25;
constexpr double brightAbove = 0.75;

/// What the two kinds of card ask for: a bank card gets the stronger contrast and sharpening, and less colour.
struct SceneTuning {
  const char* logPrefix;
  double gentleSharpness;
  double baseContrast;
  double baseSharpness;
  double saturation;
};
constexpr SceneTuning idCardTuning{"ID卡预处理", 0.15, 1.05, 0.3, 0.85};
constexpr SceneTuning bankCardTuning{"银行卡预处理", 0.25, 1.08, 0.4, 0.7};

const SceneTuning& tuningOf(Scene scene) {
  return scene == Scene::bankCard ? bankCardTuning : idCardTuning;
}

constexpr AdaptiveParams enhancedRetry{1.35, 0.0, 0.75, 1.0, "增强重试"};

constexpr std::array<AdaptiveParams, 3> cardNumberVariants{{
    {1.3, 0.0, 0.7, 1.0, "ROI-高对比"},
    {1.5, 0.0, 0.8, 0.3, "ROI-超对比灰"},
    {1.4, 0.08, 0.75, 1.0, "ROI-提亮"},
}};

constexpr RectangleRequest cardRectangle{.maximumObservations = 5,
                                         .minimumAspectRatio = 0.3F,
                                         .maximumAspectRatio = 1.0F,
                                         .quadratureTolerance = 45,
                                         .minimumSize = 0.3F,
                                         .minimumConfidence = 0.5F};
/// One of several cards, of which each may be a twentieth of the picture.
constexpr RectangleRequest oneOfSeveral{.maximumObservations = 24,
                                        .minimumAspectRatio = 0.45F,
                                        .maximumAspectRatio = 0.85F,
                                        .quadratureTolerance = 30,
                                        .minimumSize = 0.12F,
                                        .minimumConfidence = 0.5F};
constexpr double minimumRectangleArea = 0.12;
/// A card whose corners are all closer than this to its bounding box is square to the frame already.
constexpr double alignedOffset = 0.05;
constexpr double minimumCorrectedWidth = 0.25;
/// A corrected card lies on its long side; the bound is well below a card's 1.586 because corners are never exact.
constexpr double minimumCorrectedAspect = 1.2;

/// Where the number stands on a card: fractions of the side along the number and of the side across it.
constexpr double bandInset = 0.02;
constexpr double bandLength = 0.96;
constexpr double fixedBandStart = 0.444;
constexpr double fixedBandExtent = 0.333;
constexpr double dynamicBandHalfExtent = 0.09;
constexpr double dynamicBandFirst = 0.2;
constexpr double dynamicBandLast = 0.88;
constexpr double minimumBandWidth = 50;
/// The dynamic band is thinner by nature, so less is asked of it.
constexpr double minimumFixedBandHeight = 20;
constexpr double minimumDynamicBandHeight = 15;

std::optional<Bitmap> normalizedBitmap(const Image& image) {
  if (!image.bitmap) return std::nullopt;
  return uprightBitmap(*image.bitmap, image.orientation);
}

std::string describe(const AdaptiveParams& params) {
  return formatted("[{}] contrast={:.3f}, brightness={:.3f}, sharpness={:.3f}, saturation={:.2f}", params.mode,
                   params.contrast, params.brightness, params.sharpness, params.saturation);
}

bool isWellExposed(const Stats& s) {
  return s.mean >= 0.35 && s.mean <= 0.7 && s.std >= 0.15 && s.darkRatio < 0.45 && s.brightRatio < 0.45;
}

double spreadTerm(const Stats& s) {
  if (s.std < 0.15) return (0.15 - s.std) * 1.3;
  return s.std > 0.3 ? -0.03 : 0;
}

double exposureTerm(const Stats& s) {
  if (s.mean < 0.35 && s.darkRatio > 0.5) return 0.08;
  return s.mean > 0.7 && s.brightRatio > 0.5 ? 0.06 : 0;
}

/// Its thresholds differ from those of the contrast on purpose: sharpening noise hurts sooner than contrast does.
double sharpnessAdjustment(const Stats& s) {
  if (s.std < 0.12) return 0.2;
  return s.std > 0.28 ? -0.1 : 0;
}

double distance(const Point& a, const Point& b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

/// The largest distance of a corner from the same corner of the bounding box (origin at the lower left).
double largestCornerOffset(const RectangleObservation& rectangle) {
  const Rect& box = rectangle.boundingBox;
  const Quadrilateral& corners = rectangle.corners;
  return std::max({distance(corners.topLeft, {box.x, box.maxY()}), distance(corners.topRight, {box.maxX(), box.maxY()}),
                   distance(corners.bottomLeft, {box.x, box.y}), distance(corners.bottomRight, {box.maxX(), box.y})});
}

/// The part of `area` that lies within the picture; nothing when they do not meet.
std::optional<Rect> intersectedWithBounds(const Rect& area, const Bitmap& bitmap) {
  const Rect part = intersection(area, {0, 0, bitmap.size().width, bitmap.size().height});
  if (!(part.width > 0 && part.height > 0)) return std::nullopt;
  return part;
}

/// Cuts every pixel that the fractional rectangle touches; it must lie within the picture.
Bitmap cut(const Bitmap& bitmap, const Rect& area) {
  return bitmap.crop(touchedPixels(area, bitmap.size()));
}

/// The band between two fractions of the side across the number: rows of a card that lies, columns of one that
/// stands upright.
Rect numberBand(const Bitmap& bitmap, double start, double extent) {
  const double width = bitmap.width();
  const double height = bitmap.height();
  if (height < width) return {bandInset * width, start * height, bandLength * width, extent * height};
  return {start * width, bandInset * height, extent * width, bandLength * height};
}

std::optional<Rect> usableBand(const Bitmap& bitmap, const Rect& band, double minimumHeight) {
  if (!(band.width > minimumBandWidth && band.height > minimumHeight)) return std::nullopt;
  return intersectedWithBounds(band, bitmap);
}

std::string describe(const Rect& area, const Bitmap& bitmap) {
  return formatted("({},{}) {}x{} [原图 {}x{}]", static_cast<int>(area.x), static_cast<int>(area.y),
                   static_cast<int>(area.width), static_cast<int>(area.height), bitmap.width(), bitmap.height());
}

}  // namespace

ImagePreprocessor::ImagePreprocessor(std::shared_ptr<const ImageRenderer> renderer,
                                     std::shared_ptr<const RectangleDetector> detector)
    : renderer_(std::move(renderer)), detector_(std::move(detector)) {}

std::optional<Bitmap> ImagePreprocessor::preprocessForBankCardEnhanced(const Image& image) const {
  const std::optional<Bitmap> bitmap = normalizedBitmap(image);
  if (!bitmap) return std::nullopt;
  OCRLogger::debug([] { return "银行卡预处理(增强重试) — 参数: " + describe(enhancedRetry); });
  return enhance(*bitmap, enhancedRetry);
}

std::optional<Bitmap> ImagePreprocessor::preprocess(const Image& image, Scene scene) const {
  const std::optional<Bitmap> bitmap = normalizedBitmap(image);
  if (!bitmap) return std::nullopt;
  const Stats stats = analyzeImage(*bitmap);
  const AdaptiveParams params = computeParams(stats, scene);
  const char* prefix = tuningOf(scene).logPrefix;
  OCRLogger::debug([&] {
    return formatted("{} — 图像统计: mean={:.3f}, std={:.3f}, dark={:.3f}, bright={:.3f}", prefix, stats.mean,
                     stats.std, stats.darkRatio, stats.brightRatio);
  });
  OCRLogger::debug([&] { return formatted("{} — 自适应参数: {}", prefix, describe(params)); });
  return enhance(*bitmap, params);
}

Stats ImagePreprocessor::analyzeImage(const Bitmap& bitmap) const {
  std::optional<Bitmap> thumbnail;
  if (renderer_) thumbnail = renderer_->greyThumbnail(bitmap, thumbnailSide, thumbnailSide);
  if (!thumbnail) {
    OCRLogger::warning([] { return std::string("图像分析失败：无法创建采样上下文，使用默认统计"); });
    return ordinaryStats;
  }

  double sum = 0;
  double sumOfSquares = 0;
  int dark = 0;
  int bright = 0;
  for (int y = 0; y < thumbnail->height(); ++y) {
    const std::uint8_t* row = thumbnail->row(y);
    for (int x = 0; x < thumbnail->width(); ++x) {
      const double value = row[x] / 255.0;
      sum += value;
      sumOfSquares += value * value;
      if (value < darkBelow) ++dark;
      if (value > brightAbove) ++bright;
    }
  }
  const double count = static_cast<double>(thumbnail->width()) * thumbnail->height();
  const double mean = sum / count;
  return {mean, std::sqrt(std::max(0.0, sumOfSquares / count - mean * mean)), dark / count, bright / count};
}

AdaptiveParams ImagePreprocessor::computeParams(const Stats& stats, Scene scene) {
  const SceneTuning& tuning = tuningOf(scene);
  if (isWellExposed(stats)) return {1.03, 0.0, tuning.gentleSharpness, 0.92, "轻柔"};
  return {std::clamp(tuning.baseContrast + spreadTerm(stats) + exposureTerm(stats), 0.9, 1.35),
          std::clamp((0.5 - stats.mean) * 0.6, -0.15, 0.15),
          std::clamp(tuning.baseSharpness + sharpnessAdjustment(stats), 0.1, 0.6), tuning.saturation, "自适应"};
}

std::optional<Bitmap> ImagePreprocessor::enhance(const Bitmap& bitmap, const AdaptiveParams& params) const {
  if (!renderer_) return std::nullopt;
  std::vector<ImageFilter> filters{ColorControls{params.contrast, params.brightness, params.saturation}};
  // The radius of zero asks for the finest sharpening: strokes of small print are one or two pixels wide.
  if (params.sharpness > 0) filters.emplace_back(SharpenLuminance{params.sharpness, 0.0});
  return renderer_->render(bitmap, filters);
}

/// The reason of an empty answer is logged.
std::vector<RectangleObservation> ImagePreprocessor::rectanglesIn(const Bitmap& bitmap,
                                                                  const RectangleRequest& request) const {
  std::vector<RectangleObservation> rectangles;
  if (!detector_) {
    OCRLogger::debug([] { return std::string("透视矫正: 没有可用的矩形检测器，跳过"); });
    return rectangles;
  }
  // A detector that fails has found nothing; the photo is read as it is.
  if (const auto failure = failureOf([&] { rectangles = detector_->detect(bitmap, request); })) {
    OCRLogger::warning([&] { return formatted("透视矫正: 矩形检测失败（{}），跳过", *failure); });
    return {};
  }
  if (rectangles.empty()) OCRLogger::debug([] { return std::string("透视矫正: 未检测到矩形，跳过"); });
  return rectangles;
}

bool ImagePreprocessor::showsRectangle(const Image& image) const {
  const std::optional<Bitmap> bitmap = normalizedBitmap(image);
  return bitmap && !rectanglesIn(*bitmap, cardRectangle).empty();
}

std::optional<Bitmap> ImagePreprocessor::straightened(const Bitmap& bitmap, const Quadrilateral& corners) const {
  if (!renderer_) return std::nullopt;
  const auto fromLowerLeft = [&](const Point& corner) { return Point{corner.x, bitmap.height() - corner.y}; };
  const std::array<ImageFilter, 1> correction{
      PerspectiveCorrection{{fromLowerLeft(corners.topLeft), fromLowerLeft(corners.topRight),
                             fromLowerLeft(corners.bottomLeft), fromLowerLeft(corners.bottomRight)}}};
  return renderer_->render(bitmap, correction);
}

std::vector<Quadrilateral> ImagePreprocessor::cardOutlines(const Bitmap& bitmap) const {
  std::vector<Quadrilateral> outlines;
  for (const RectangleObservation& card : rectanglesIn(bitmap, oneOfSeveral))
    outlines.push_back(inPixels(flipped(card.corners), bitmap.size()));
  return outlines;
}

ImagePreprocessor::FoundCard ImagePreprocessor::findCard(const Image& image) const {
  const std::optional<Bitmap> bitmap = normalizedBitmap(image);
  if (!bitmap) return {};
  if (!renderer_) {
    OCRLogger::debug([] { return std::string("透视矫正: 没有可用的图像渲染器，跳过"); });
    return {};
  }
  const std::vector<RectangleObservation> rectangles = rectanglesIn(*bitmap, cardRectangle);
  if (rectangles.empty()) return {};
  const RectangleObservation& card = rectangles.front();
  return {.outline = inPixels(flipped(card.corners), bitmap->size()), .straightened = corrected(*bitmap, card)};
}

std::optional<Image> ImagePreprocessor::corrected(const Bitmap& bitmap, const RectangleObservation& card) const {
  const double area = card.boundingBox.area();
  if (area < minimumRectangleArea) {
    OCRLogger::debug([&] { return formatted("透视矫正: 检测矩形面积过小 (area={:.3f})，跳过", area); });
    return std::nullopt;
  }
  const double offset = largestCornerOffset(card);
  if (offset < alignedOffset) {
    OCRLogger::debug([&] { return formatted("透视矫正: 矩形已对齐（最大偏移 {:.3f}），跳过", offset); });
    return std::nullopt;
  }

  const std::optional<Bitmap> result = straightened(bitmap, inPixels(flipped(card.corners), bitmap.size()));
  if (!result) {
    OCRLogger::debug([] { return std::string("透视矫正: 渲染失败，跳过"); });
    return std::nullopt;
  }
  const int width = result->width();
  const int height = result->height();
  const double ratio = static_cast<double>(width) / std::max(height, 1);
  if (width < minimumCorrectedWidth * bitmap.width() || ratio < minimumCorrectedAspect) {
    OCRLogger::debug(
        [&] { return formatted("透视矫正: 矫正结果异常（比例={:.2f}, {}×{}），已丢弃", ratio, width, height); });
    return std::nullopt;
  }
  OCRLogger::debug([&] {
    return formatted("透视矫正: confidence={:.2f}, offset={:.3f}, 矫正后 {}×{}", card.confidence, offset, width,
                     height);
  });
  return Image{.bitmap = result};
}

std::optional<Bitmap> ImagePreprocessor::cropToCardNumberRegion(const Bitmap& bitmap) const {
  const auto band = usableBand(bitmap, numberBand(bitmap, fixedBandStart, fixedBandExtent), minimumFixedBandHeight);
  if (!band) return std::nullopt;
  OCRLogger::debug([&] { return "ROI裁剪: 卡号区域 " + describe(*band, bitmap); });
  return cut(bitmap, *band);
}

std::optional<Bitmap> ImagePreprocessor::cropToCardNumberRegionDynamic(const Bitmap& bitmap, double centerY) const {
  const double first = std::max(centerY - dynamicBandHalfExtent, dynamicBandFirst);
  const double last = std::min(centerY + dynamicBandHalfExtent, dynamicBandLast);
  const auto band = usableBand(bitmap, numberBand(bitmap, first, last - first), minimumDynamicBandHeight);
  if (!band) return std::nullopt;
  OCRLogger::debug([&] { return formatted("动态ROI裁剪: centerY={:.3f} → {}", centerY, describe(*band, bitmap)); });
  return cut(bitmap, *band);
}

std::vector<ImagePreprocessor::Variant> ImagePreprocessor::preprocessCardNumberROI(const Bitmap& bitmap) const {
  std::vector<Variant> variants;
  for (const AdaptiveParams& params : cardNumberVariants) {
    if (auto enhanced = enhance(bitmap, params)) variants.push_back({*std::move(enhanced), params.mode});
  }
  return variants;
}

}  // namespace pravik
