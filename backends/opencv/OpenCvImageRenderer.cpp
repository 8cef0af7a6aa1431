#include "backends/opencv/OpenCvImageRenderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "Platform/ImageCodec.h"
#include "backends/opencv/Halving.h"
#include "backends/opencv/Mat.h"

namespace pravik {
namespace {

// Weights of blue, green and red in the luma (ITU-R BT.709) in 256ths.
constexpr int lumaOfBlue = 19, lumaOfGreen = 183, lumaOfRed = 54;
// The binomial 3 x 3 kernel, the finest blur, has about this standard deviation.
constexpr double finestBlur = 0.85;
constexpr double widestBlur = 100;
// Rows rendered at a time, so that their intermediate pixels stay in the cache.
constexpr int bandRows = 64;
// OpenCV addresses the pixels of a warp with 16 bits.
constexpr double longestWarpedSide = 32766;

/// Colour controls and sharpening that are rendered together, in this order.
struct Pass {
  std::optional<ColorControls> colors;
  std::optional<SharpenLuminance> sharpening;

  bool empty() const { return !colors && !sharpening; }
};

bool isValid(const Pass& pass) {
  const ColorControls colors = pass.colors.value_or(ColorControls{});
  const SharpenLuminance sharpening = pass.sharpening.value_or(SharpenLuminance{});
  return std::isfinite(colors.contrast) && std::isfinite(colors.brightness) && std::isfinite(colors.saturation) &&
         std::isfinite(sharpening.sharpness) && sharpening.radius >= 0 && sharpening.radius <= widestBlur;
}

/// The three colour controls as one linear form on values of 0 to 255: own * channel + luma * luma + offset.
struct LinearColors {
  float own;
  float luma;
  float offset;
};

LinearColors linearColors(const ColorControls& controls) {
  return {.own = static_cast<float>(controls.contrast * controls.saturation),
          .luma = static_cast<float>(controls.contrast * (1 - controls.saturation) / 256),
          .offset = static_cast<float>(255 * (controls.contrast * (controls.brightness - 0.5) + 0.5))};
}

/// Clamped to a byte and rounded.
std::uint8_t toByte(float value) {
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): not for what is clamped first, and faster than std::lround.
  return static_cast<std::uint8_t>(static_cast<int>(std::min(std::max(value, 0.0F), 255.0F) + 0.5F));
}

/// 256 times the luma.
int lumaOf(const std::uint8_t* bgra) {
  return lumaOfBlue * bgra[0] + lumaOfGreen * bgra[1] + lumaOfRed * bgra[2];
}

void controlColors(const std::uint8_t* __restrict source, std::uint8_t* __restrict target, int pixels,
                   LinearColors colors) {
  for (int x = 0; x < pixels; ++x) {
    const std::uint8_t* from = source + 4 * x;
    std::uint8_t* to = target + 4 * x;
    const float shared = colors.luma * static_cast<float>(lumaOf(from)) + colors.offset;
    to[0] = toByte(colors.own * from[0] + shared);
    to[1] = toByte(colors.own * from[1] + shared);
    to[2] = toByte(colors.own * from[2] + shared);
    to[3] = 255;
  }
}

void controlGreys(const std::uint8_t* __restrict source, std::uint8_t* __restrict target, int pixels,
                  LinearColors colors) {
  // The luma of a grey is the grey itself.
  const float slope = colors.own + 256 * colors.luma;
  for (int x = 0; x < pixels; ++x) target[x] = toByte(slope * source[x] + colors.offset);
}

void controlColors(const cv::Mat& source, cv::Mat& target, const ColorControls& controls) {
  const LinearColors colors = linearColors(controls);
  for (int y = 0; y < source.rows; ++y) {
    if (source.channels() == 4)
      controlColors(source.ptr(y), target.ptr(y), source.cols, colors);
    else
      controlGreys(source.ptr(y), target.ptr(y), source.cols, colors);
  }
}

cv::Mat lumaOf(const cv::Mat& pixels) {
  if (pixels.channels() == 1) return pixels;
  cv::Mat luma(pixels.size(), CV_8UC1);
  for (int y = 0; y < pixels.rows; ++y) {
    const std::uint8_t* __restrict from = pixels.ptr(y);
    std::uint8_t* __restrict to = luma.ptr(y);
    for (int x = 0; x < pixels.cols; ++x) to[x] = static_cast<std::uint8_t>((lumaOf(from + 4 * x) + 128) >> 8);
  }
  return luma;
}

void addDetail(const std::uint8_t* __restrict source, const std::uint8_t* __restrict luma,
               const std::uint8_t* __restrict blurred, std::uint8_t* __restrict target, int pixels, float sharpness) {
  for (int x = 0; x < pixels; ++x) {
    const float detail = sharpness * static_cast<float>(luma[x] - blurred[x]);
    for (int c = 0; c < 3; ++c) target[4 * x + c] = toByte(source[4 * x + c] + detail);
    target[4 * x + 3] = 255;
  }
}

void addDetail(const std::uint8_t* __restrict luma, const std::uint8_t* __restrict blurred,
               std::uint8_t* __restrict target, int pixels, float sharpness) {
  for (int x = 0; x < pixels; ++x) target[x] = toByte(luma[x] + sharpness * static_cast<float>(luma[x] - blurred[x]));
}

/// Pixels that the blur reaches to either side.
int blurReach(const SharpenLuminance& sharpening) {
  return std::max(1, static_cast<int>(std::ceil(2 * sharpening.radius)));
}

/// Unsharp masking of the luma. Of `source`, `target` shows the rows from `firstRow`; the others are there for the
/// blur.
void sharpen(const cv::Mat& source, int firstRow, cv::Mat& target, const SharpenLuminance& sharpening) {
  const cv::Mat luma = lumaOf(source);
  const int side = 2 * blurReach(sharpening) + 1;
  cv::Mat blurred;
  cv::GaussianBlur(luma, blurred, {side, side}, std::max(sharpening.radius, finestBlur), 0,
                   cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
  const auto sharpness = static_cast<float>(sharpening.sharpness);
  for (int y = 0; y < target.rows; ++y) {
    const int from = y + firstRow;
    if (source.channels() == 4)
      addDetail(source.ptr(from), luma.ptr(from), blurred.ptr(from), target.ptr(y), target.cols, sharpness);
    else
      addDetail(luma.ptr(from), blurred.ptr(from), target.ptr(y), target.cols, sharpness);
  }
}

void renderRows(const cv::Mat& source, cv::Mat& target, const cv::Range& rows, const Pass& pass) {
  cv::Mat band = target.rowRange(rows);
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a pass has at least one of the two.
  if (!pass.sharpening) return controlColors(source.rowRange(rows), band, *pass.colors);
  const int reach = blurReach(*pass.sharpening);
  const cv::Range wider(std::max(0, rows.start - reach), std::min(source.rows, rows.end + reach));
  cv::Mat pixels = source.rowRange(wider);
  if (pass.colors) {
    cv::Mat controlled(pixels.size(), pixels.type());
    controlColors(pixels, controlled, *pass.colors);
    pixels = controlled;
  }
  sharpen(pixels, rows.start - wider.start, band, *pass.sharpening);
}

cv::Mat render(const cv::Mat& source, const Pass& pass) {
  cv::Mat target(source.size(), source.type());
  const int bands = (source.rows + bandRows - 1) / bandRows;
  cv::parallel_for_({0, bands}, [&](const cv::Range& range) {
    for (int band = range.start; band < range.end; ++band)
      renderRows(source, target, {band * bandRows, std::min(source.rows, (band + 1) * bandRows)}, pass);
  });
  return target;
}

/// A corner in pixels from the top left.
cv::Point2d fromTop(const Point& corner, int height) {
  return {corner.x, height - corner.y};
}

double cross(const cv::Point2d& a, const cv::Point2d& b, const cv::Point2d& c) {
  return (b - a).cross(c - b);
}

/// Whether the corners, in order around the quadrilateral, turn the same way everywhere and enclose something.
bool isConvex(const std::array<cv::Point2d, 4>& corners) {
  int left = 0, right = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const double turn = cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4]);
    left += turn < -0.5 ? 1 : 0;
    right += turn > 0.5 ? 1 : 0;
  }
  return left == 4 || right == 4;
}

/// Nothing when the corners do not enclose an area or the rectangle would be too large.
std::optional<cv::Mat> straighten(const cv::Mat& source, const Quadrilateral& quadrilateral) {
  const std::array<cv::Point2d, 4> corners = {
      fromTop(quadrilateral.topLeft, source.rows), fromTop(quadrilateral.topRight, source.rows),
      fromTop(quadrilateral.bottomRight, source.rows), fromTop(quadrilateral.bottomLeft, source.rows)};
  if (!isConvex(corners)) return std::nullopt;
  const double width = std::round(std::max(cv::norm(corners[1] - corners[0]), cv::norm(corners[2] - corners[3])));
  const double height = std::round(std::max(cv::norm(corners[3] - corners[0]), cv::norm(corners[2] - corners[1])));
  const bool fits = width >= 1 && height >= 1 && width <= longestWarpedSide && height <= longestWarpedSide &&
                    width * height <= static_cast<double>(maximumPicturePixels);
  if (!fits) return std::nullopt;

  // Corners lie between pixels, OpenCV counts from the middle of the first pixel.
  std::array<cv::Point2f, 4> from;
  std::ranges::transform(corners, from.begin(),
                         [](const cv::Point2d& corner) { return cv::Point2f(corner - cv::Point2d(0.5, 0.5)); });
  const auto right = static_cast<float>(width - 0.5), bottom = static_cast<float>(height - 0.5);
  const std::array<cv::Point2f, 4> to = {{{-0.5F, -0.5F}, {right, -0.5F}, {right, bottom}, {-0.5F, bottom}}};
  cv::Mat straight;
  cv::warpPerspective(source, straight, cv::getPerspectiveTransform(from.data(), to.data()),
                      {static_cast<int>(width), static_cast<int>(height)}, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
  return straight;
}

/// Renders filters one by one, except that colour controls wait for a sharpening that follows them.
class Rendering {
 public:
  explicit Rendering(cv::Mat pixels) : pixels_(std::move(pixels)) {}

  bool add(const ColorControls& colors) {
    if (!pending_.empty() && !flush()) return false;
    pending_.colors = colors;
    return true;
  }

  bool add(const SharpenLuminance& sharpening) {
    if (pending_.sharpening && !flush()) return false;
    pending_.sharpening = sharpening;
    return true;
  }

  bool add(const PerspectiveCorrection& correction) {
    if (!flush()) return false;
    const auto straight = straighten(pixels_, correction.corners);
    if (straight) pixels_ = *straight;
    return straight.has_value();
  }

  /// Renders what waits; false when that is impossible.
  bool flush() {
    if (!isValid(pending_)) return false;
    if (!pending_.empty()) pixels_ = render(pixels_, pending_);
    pending_ = {};
    return true;
  }

  const cv::Mat& pixels() const { return pixels_; }

 private:
  cv::Mat pixels_;
  Pass pending_;
};

}  // namespace

std::optional<Bitmap> OpenCvImageRenderer::render(const Bitmap& bitmap, std::span<const ImageFilter> filters) const {
  if (filters.empty()) return bitmap;
  try {
    Rendering rendering(asMat(bitmap));
    for (const ImageFilter& filter : filters)
      if (!std::visit([&](const auto& description) { return rendering.add(description); }, filter)) return std::nullopt;
    if (!rendering.flush()) return std::nullopt;
    return toBitmap(rendering.pixels());
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<Bitmap> OpenCvImageRenderer::greyThumbnail(const Bitmap& bitmap, int width, int height) const {
  if (width < 1 || height < 1) return std::nullopt;
  try {
    cv::Mat thumbnail;
    cv::resize(halvedTowards(asMat(bitmap), {width, height}), thumbnail, {width, height}, 0, 0, cv::INTER_AREA);
    return toBitmap(lumaOf(thumbnail));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace pravik
