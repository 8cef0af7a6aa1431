#include "backends/opencv/PictureHeader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "Platform/ImageCodec.h"
#include "backends/opencv/ByteReader.h"
#include "backends/opencv/TiffDirectory.h"

namespace pravik {
namespace {

using namespace std::string_view_literals;

// More scans than any encoder writes would only keep the decoder busy.
constexpr int maximumJpegScans = 500;

[[noreturn]] void refuse(const char* reason) {
  throw std::runtime_error(reason);
}

void requireSize(const PictureHeader& header) {
  if (header.width < 1 || header.height < 1) refuse("the picture is damaged");
  if (header.height > maximumPicturePixels / header.width)
    throw std::runtime_error("too large: " + std::to_string(header.width) + " x " + std::to_string(header.height) +
                             " pixels, at most " + std::to_string(maximumPicturePixels / 1'000'000) + " megapixels");
}

ByteReader bigEndian(std::span<const std::uint8_t> bytes) {
  return {bytes, std::endian::big};
}
ByteReader littleEndian(std::span<const std::uint8_t> bytes) {
  return {bytes, std::endian::little};
}

/// Damaged Exif data is no reason to refuse a picture: it stands up then.
ImageOrientation exifOrientation(std::span<const std::uint8_t> exif) {
  try {
    return readTiffDirectory(exif).orientation;
  } catch (const std::runtime_error&) {
    return ImageOrientation::up;
  }
}

/// The place of the next marker after the coded pixels of a scan (ITU-T T.81, B.1.1.5).
std::size_t endOfScan(const ByteReader& bytes, std::size_t at) {
  while (true) {
    if (bytes.u8(at) == 0xFF) {
      const std::uint8_t code = bytes.u8(at + 1);
      const bool stuffing = code == 0x00, restart = code >= 0xD0 && code <= 0xD7, fill = code == 0xFF;
      if (!stuffing && !restart && !fill) return at;
    }
    ++at;
  }
}

/// Walks all segments to the end marker, because a decoder fills up what is missing with grey.
PictureHeader readJpeg(std::span<const std::uint8_t> file) {
  const ByteReader bytes = bigEndian(file);
  PictureHeader header{.format = PictureFormat::jpeg, .width = 0, .height = 0};
  int scans = 0;
  for (std::size_t at = 2;;) {
    if (bytes.u8(at) != 0xFF) refuse("the picture is damaged");
    const std::uint8_t code = bytes.u8(at + 1);
    if (code == 0xFF) {
      ++at;
      continue;
    }
    if (code == 0xD9) break;
    const std::size_t length = bytes.u16(at + 2);
    const bool frame = code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
    if (frame) {
      // A decoder reads the first frame only; the size of another would hide that of the first.
      if (header.width > 0) refuse("the picture is damaged");
      header.height = bytes.u16(at + 5);
      header.width = bytes.u16(at + 7);
    } else if (code == 0xE1 && bytes.matches(at + 4, "Exif\0\0"sv) && length >= 8) {
      header.orientation = exifOrientation(bytes.part(at + 10, length - 8));
    }
    at += 2 + length;
    if (code == 0xDA) {
      if (++scans > maximumJpegScans) refuse("the picture is damaged");
      at = endOfScan(bytes, at);
    }
  }
  if (scans == 0) refuse("the picture is damaged");
  return header;
}

/// The check sum of a chunk (PNG, annex D).
std::uint32_t crc32(std::span<const std::uint8_t> bytes) {
  static const auto table = [] {
    std::array<std::uint32_t, 256> sums{};
    for (std::uint32_t i = 0; i < sums.size(); ++i) {
      std::uint32_t sum = i;
      for (int bit = 0; bit < 8; ++bit) sum = (sum & 1U) != 0 ? 0xEDB88320U ^ sum >> 1U : sum >> 1U;
      sums[i] = sum;
    }
    return sums;
  }();
  std::uint32_t sum = ~0U;
  for (const std::uint8_t byte : bytes) sum = table[(sum ^ byte) & 0xFFU] ^ sum >> 8U;
  return ~sum;
}

PictureHeader readPng(std::span<const std::uint8_t> file) {
  const ByteReader bytes = bigEndian(file);
  PictureHeader header{.format = PictureFormat::png, .width = bytes.u32(16), .height = bytes.u32(20)};
  // Before the rest of a file is walked through.
  requireSize(header);
  for (std::size_t at = 8, length = 0;; at += 12 + length) {
    length = bytes.u32(at);
    if (crc32(bytes.part(at + 4, length + 4)) != bytes.u32(at + 8 + length)) refuse("the picture is damaged");
    if (bytes.matches(at + 4, "eXIf")) header.orientation = exifOrientation(bytes.part(at + 8, length));
    if (bytes.matches(at + 4, "IEND")) break;
  }
  return header;
}

PictureHeader readBmp(std::span<const std::uint8_t> file) {
  const ByteReader bytes = littleEndian(file);
  PictureHeader header{.format = PictureFormat::bmp, .width = 0, .height = 0};
  if (bytes.u32(14) == 12) {
    header.width = bytes.u16(18);
    header.height = bytes.u16(20);
    return header;
  }
  header.width = static_cast<std::int32_t>(bytes.u32(18));
  // Rows from the top have a negative height.
  header.height = std::abs(std::int64_t{static_cast<std::int32_t>(bytes.u32(22))});
  // Before the size is multiplied.
  requireSize(header);
  const std::uint16_t bitsPerPixel = bytes.u16(28);
  const bool uncompressed = bytes.u32(30) == 0;
  const std::int64_t rowBytes = (header.width * bitsPerPixel + 31) / 32 * 4;
  const std::int64_t room = static_cast<std::int64_t>(bytes.size()) - bytes.u32(10);
  if (uncompressed && rowBytes * header.height > room) refuse("the file is truncated");
  return header;
}

/// RIFF container of WebP: the size of the canvas is in the first chunk, whichever of the three kinds it is.
PictureHeader readWebp(std::span<const std::uint8_t> file) {
  const ByteReader bytes = littleEndian(file);
  bytes.part(8, bytes.u32(4));
  PictureHeader header{.format = PictureFormat::webp, .width = 0, .height = 0};
  if (bytes.matches(12, "VP8X")) {
    constexpr unsigned animated = 2;
    if ((bytes.u8(20) & animated) != 0) refuse("an animated picture cannot be read");
    header.width = 1 + std::int64_t{bytes.u24(24)};
    header.height = 1 + std::int64_t{bytes.u24(27)};
  } else if (bytes.matches(12, "VP8L")) {
    const std::uint32_t sizes = bytes.u32(21);
    header.width = 1 + (sizes & 0x3FFFU);
    header.height = 1 + (sizes >> 14U & 0x3FFFU);
  } else if (bytes.matches(12, "VP8 ")) {
    header.width = bytes.u16(26) & 0x3FFF;
    header.height = bytes.u16(28) & 0x3FFF;
  }
  for (std::size_t at = 12; at + 8 <= bytes.size();) {
    const std::size_t length = bytes.u32(at + 4);
    if (bytes.matches(at, "EXIF")) header.orientation = exifOrientation(bytes.part(at + 8, length));
    at += 8 + length + length % 2;
  }
  return header;
}

PictureHeader readTiff(std::span<const std::uint8_t> file) {
  const TiffDirectory directory = readTiffDirectory(file);
  return {.format = PictureFormat::tiff,
          .width = directory.width.value_or(0),
          .height = directory.height.value_or(0),
          .orientation = directory.orientation};
}

PictureHeader readByFormat(std::span<const std::uint8_t> file) {
  const ByteReader bytes = bigEndian(file);
  if (bytes.matches(0, "\xFF\xD8\xFF"sv)) return readJpeg(file);
  if (bytes.matches(0, "\x89PNG\r\n\x1A\n"sv)) return readPng(file);
  if (bytes.matches(0, "RIFF"sv) && bytes.matches(8, "WEBP"sv)) return readWebp(file);
  if (bytes.matches(0, "II*\0"sv) || bytes.matches(0, "MM\0*"sv)) return readTiff(file);
  if (bytes.matches(0, "BM"sv) && bytes.size() > 26) return readBmp(file);
  refuse("not a picture (JPEG, PNG, WebP, BMP and TIFF can be read)");
}

}  // namespace

PictureHeader readPictureHeader(std::span<const std::uint8_t> file) {
  const PictureHeader header = readByFormat(file);
  requireSize(header);
  return header;
}

}  // namespace pravik
