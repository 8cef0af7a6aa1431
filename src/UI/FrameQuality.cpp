#include "UI/FrameQuality.h"

#include <cstddef>
#include <cstdint>

namespace pravik {
namespace {

constexpr std::ptrdiff_t sampleStep = 4;

// Luma times 1000: from here on a pixel is glare, below there it is dark.
constexpr std::int32_t glareLevel = 246'000;
constexpr std::int32_t darkLevel = 15'000;

// A frame at or above one of these is not taken by itself.
constexpr float captureSpecularLimit = 0.07F;
constexpr float captureDarkLimit = 0.65F;
constexpr float capturePeakRowLimit = 0.25F;

// Above these the user is told. They differ from the limits above: mild glare is worth a hint and still good enough.
constexpr float severeSpecular = 0.12F;
constexpr float severePeakRow = 0.25F;
constexpr float mildSpecular = 0.04F;
constexpr float mildPeakRow = 0.15F;
constexpr float hintedDark = 0.65F;

/// A range of columns or rows, the end exclusive.
struct Range {
  std::ptrdiff_t begin;
  std::ptrdiff_t end;
};

Range centralPart(std::ptrdiff_t size) {
  return {size / 5, size / 5 + 3 * size / 5};
}

struct Counts {
  std::int32_t samples = 0;
  std::int32_t glare = 0;
  std::int32_t dark = 0;
};

std::int32_t lumaSum(const std::uint8_t* pixel, PixelFormat format) {
  if (format == PixelFormat::grey8) return 1000 * pixel[0];
  // Put together as one word, the pixel is loaded at once, and the compiler can take several pixels at a time.
  const std::uint32_t bgra =
      pixel[0] | std::uint32_t{pixel[1]} << 8U | std::uint32_t{pixel[2]} << 16U | std::uint32_t{pixel[3]} << 24U;
  const auto channel = [bgra](unsigned shift) { return static_cast<std::int32_t>((bgra >> shift) & 0xFFU); };
  return 114 * channel(0) + 587 * channel(8) + 299 * channel(16);
}

template <PixelFormat format>
Counts countRow(const std::uint8_t* row, Range columns) {
  Counts counts;
  counts.samples = static_cast<std::int32_t>((columns.end - columns.begin + sampleStep - 1) / sampleStep);
  const std::uint8_t* first = row + columns.begin * bytesPerPixel(format);
  for (std::ptrdiff_t i = 0; i < counts.samples; ++i) {
    const std::int32_t luma = lumaSum(first + i * sampleStep * bytesPerPixel(format), format);
    counts.glare += luma >= glareLevel ? 1 : 0;
    counts.dark += luma < darkLevel ? 1 : 0;
  }
  return counts;
}

float ratio(std::int64_t part, std::int64_t whole) {
  return static_cast<float>(part) / static_cast<float>(whole);
}

}  // namespace

FrameQuality FrameQuality::analyze(const VideoFrame& frame) {
  if (!frame.pixels) return {};
  const Bitmap& bitmap = *frame.pixels;
  const Range rows = centralPart(bitmap.height());
  const Range columns = centralPart(bitmap.width());
  const auto count =
      bitmap.format() == PixelFormat::bgra8 ? countRow<PixelFormat::bgra8> : countRow<PixelFormat::grey8>;

  std::int64_t samples = 0;
  std::int64_t glare = 0;
  std::int64_t dark = 0;
  Counts peak;
  for (std::ptrdiff_t y = rows.begin; y < rows.end; y += sampleStep) {
    const Counts row = count(bitmap.row(static_cast<int>(y)), columns);
    samples += row.samples;
    glare += row.glare;
    dark += row.dark;
    if (peak.samples == 0 || row.glare > peak.glare) peak = row;
  }
  if (samples < 1) return {};

  FrameQuality quality{ratio(glare, samples), ratio(dark, samples), ratio(peak.glare, peak.samples), false};
  quality.isGoodForCapture = quality.specularRatio < captureSpecularLimit && quality.darkRatio < captureDarkLimit &&
                             quality.peakRowRatio < capturePeakRowLimit;
  return quality;
}

std::optional<std::string_view> FrameQuality::qualityHint() const {
  if (specularRatio > severeSpecular || peakRowRatio > severePeakRow) return "⚠️ 反光严重，请将卡片向前倾斜约10°";
  if (specularRatio > mildSpecular || peakRowRatio > mildPeakRow) return "⚠️ 请稍微倾斜卡片以减少反光";
  if (darkRatio > hintedDark) return "⚠️ 光线不足，请开启手电筒";
  return std::nullopt;
}

}  // namespace pravik
