#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "backends/opencv/files/ByteReader.h"
#include "backends/opencv/files/PixelDecoders.h"

namespace pravik {
namespace {

// The fields of a BITMAPFILEHEADER of 14 bytes and of the header behind it: a BITMAPCOREHEADER of 12 bytes, or one that
// begins like a BITMAPINFOHEADER.
constexpr std::size_t pixelsField = 10, headerField = 14, coreBitsField = 24, bitsField = 28, compressionField = 30,
                      colorsField = 46, masksField = 54;
constexpr std::uint32_t coreHeader = 12, infoHeader = 40, headerWithAlpha = 56;
constexpr std::uint32_t uncompressed = 0, bitFields = 3, bitFieldsWithAlpha = 6;

/// Bits of blue, green, red and alpha in a pixel of 16 or 32 bits.
using Masks = std::array<std::uint32_t, 4>;
constexpr Masks masksOf16{0x1F, 0x3E0, 0x7C00, 0}, masksOf32{0xFF, 0xFF00, 0xFF0000, 0};

struct Layout {
  int bits;
  Masks masks{};
  /// The colours of pixels of up to 8 bits.
  std::vector<cv::Vec4b> palette;
};

std::uint8_t scaled(std::uint32_t pixel, std::uint32_t mask, std::uint8_t without) {
  if (mask == 0) return without;
  const int shift = std::countr_zero(mask);
  return static_cast<std::uint8_t>(std::uint64_t{(pixel & mask) >> shift} * 255 / (mask >> shift));
}

std::vector<cv::Vec4b> paletteOf(const ByteReader& bytes, int bits) {
  const std::uint32_t header = bytes.u32(headerField);
  const std::size_t entry = header == coreHeader ? 3 : 4, most = std::size_t{1} << static_cast<unsigned>(bits);
  const std::size_t told = header == coreHeader ? 0 : bytes.u32(colorsField);
  std::vector<cv::Vec4b> palette(most, cv::Vec4b(0, 0, 0, 255));
  for (std::size_t i = 0; i < (told == 0 ? most : std::min(told, most)); ++i) {
    const auto color = bytes.part(headerField + header + i * entry, 3);
    palette[i] = {color[0], color[1], color[2], 255};
  }
  return palette;
}

Layout layoutOf(const ByteReader& bytes) {
  const std::uint32_t header = bytes.u32(headerField);
  const std::uint32_t compression = header == coreHeader ? uncompressed : bytes.u32(compressionField);
  Layout layout{.bits = bytes.u16(header == coreHeader ? coreBitsField : bitsField), .palette = {}};
  const bool isWide = layout.bits == 16 || layout.bits == 32;
  const bool tellsMasks = compression == bitFields || compression == bitFieldsWithAlpha;
  constexpr std::array allowedBits{1, 4, 8, 16, 24, 32};
  if (header != coreHeader && header < infoHeader) throw std::runtime_error("the picture is damaged");
  if (std::ranges::find(allowedBits, layout.bits) == allowedBits.end() ||
      (compression != uncompressed && !(tellsMasks && isWide)))
    throw std::runtime_error("pixels of this kind cannot be read");
  if (layout.bits <= 8) layout.palette = paletteOf(bytes, layout.bits);
  if (isWide) layout.masks = layout.bits == 16 ? masksOf16 : masksOf32;
  // They stand from red to blue.
  if (tellsMasks)
    layout.masks = {bytes.u32(masksField + 8), bytes.u32(masksField + 4), bytes.u32(masksField),
                    header >= headerWithAlpha || compression == bitFieldsWithAlpha ? bytes.u32(masksField + 12) : 0};
  return layout;
}

cv::Vec4b pixelAt(std::span<const std::uint8_t> row, std::size_t x, const Layout& layout) {
  const ByteReader bytes(row, std::endian::little);
  if (layout.bits == 24) return {row[3 * x], row[3 * x + 1], row[3 * x + 2], 255};
  if (layout.bits > 8) {
    const std::uint32_t pixel = layout.bits == 16 ? bytes.u16(2 * x) : bytes.u32(4 * x);
    const auto& [blue, green, red, alpha] = layout.masks;
    return {scaled(pixel, blue, 0), scaled(pixel, green, 0), scaled(pixel, red, 0), scaled(pixel, alpha, 255)};
  }
  const auto bits = static_cast<std::size_t>(layout.bits), perByte = 8 / bits;
  // The first pixel of a byte is in its highest bits.
  const std::size_t shift = 8 - bits * (x % perByte + 1);
  return layout.palette[static_cast<std::size_t>(row[x / perByte] >> shift) & (layout.palette.size() - 1)];
}

}  // namespace

cv::Mat bmpPixels(std::span<const std::uint8_t> file, cv::Size size) {
  const ByteReader bytes(file, std::endian::little);
  const Layout layout = layoutOf(bytes);
  const std::size_t rowBytes =
      (static_cast<std::size_t>(size.width) * static_cast<std::size_t>(layout.bits) + 31) / 32 * 4;
  // Rows from the top have a negative height.
  const bool isFromTop = bytes.u32(headerField) != coreHeader && static_cast<std::int32_t>(bytes.u32(22)) < 0;
  cv::Mat pixels(size, CV_8UC4);
  for (int y = 0; y < size.height; ++y) {
    const auto stored = static_cast<std::size_t>(isFromTop ? y : size.height - 1 - y);
    const auto row = bytes.part(bytes.u32(pixelsField) + stored * rowBytes, rowBytes);
    for (int x = 0; x < size.width; ++x) pixels.at<cv::Vec4b>(y, x) = pixelAt(row, static_cast<std::size_t>(x), layout);
  }
  return pixels;
}

}  // namespace pravik
