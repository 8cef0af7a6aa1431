#include "backends/opencv/files/PictureHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Platform/ImageCodec.h"
#include "backends/opencv/files/ByteReader.h"

namespace pravik {
namespace {

using namespace std::string_view_literals;

/// What a directory of TIFF data (TIFF 6.0, section 2) says; Exif data has the same form.
struct TiffDirectory {
  std::optional<std::uint32_t> width;
  std::optional<std::uint32_t> height;
  ImageOrientation orientation = ImageOrientation::up;
};

constexpr std::uint16_t widthTag = 0x100, heightTag = 0x101, orientationTag = 0x112;
constexpr std::uint16_t subfileTypeTag = 0xFE;
constexpr std::uint16_t stripOffsetsTag = 0x111, stripLengthsTag = 0x117;
constexpr std::uint16_t tileOffsetsTag = 0x144, tileLengthsTag = 0x145;
constexpr std::uint16_t shortType = 3;

/// One value of the entry that begins at `entry`; values that do not fit into the entry lie elsewhere.
std::uint32_t valueOf(const ByteReader& bytes, std::size_t entry, std::size_t index) {
  const std::size_t size = bytes.u16(entry + 2) == shortType ? 2 : 4;
  const bool inside = bytes.u32(entry + 4) * size <= 4;
  const std::size_t at = (inside ? entry + 8 : bytes.u32(entry + 8)) + index * size;
  return size == 2 ? bytes.u16(at) : bytes.u32(at);
}

/// Throws when a strip or tile of pixels reaches beyond the end of the data.
void requirePixels(const ByteReader& bytes, std::size_t offsets, std::size_t lengths) {
  const std::size_t count = std::min(bytes.u32(offsets + 4), bytes.u32(lengths + 4));
  for (std::size_t i = 0; i < count; ++i) bytes.part(valueOf(bytes, offsets, i), valueOf(bytes, lengths, i));
}

ByteReader tiffReader(std::span<const std::uint8_t> tiff) {
  const bool bigEndian = ByteReader(tiff, std::endian::big).matches(0, "MM");
  return {tiff, bigEndian ? std::endian::big : std::endian::little};
}

/// Throws std::runtime_error when the data end before the directory or before the pixels it tells of.
TiffDirectory readTiffDirectory(const ByteReader& bytes, std::size_t directory) {
  const std::size_t count = bytes.u16(directory);
  TiffDirectory found;
  std::size_t offsets = 0, lengths = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    const std::uint16_t tag = bytes.u16(entry);
    // Of a size given twice the larger counts, so that no decoder meets more pixels than were promised.
    if (tag == widthTag) found.width = std::max(found.width.value_or(0), valueOf(bytes, entry, 0));
    if (tag == heightTag) found.height = std::max(found.height.value_or(0), valueOf(bytes, entry, 0));
    if (tag == stripOffsetsTag || tag == tileOffsetsTag) offsets = entry;
    if (tag == stripLengthsTag || tag == tileLengthsTag) lengths = entry;
    if (tag == orientationTag) {
      const std::uint32_t value = valueOf(bytes, entry, 0);
      if (value >= 1 && value <= 8) found.orientation = static_cast<ImageOrientation>(value);
    }
  }
  if (offsets != 0 && lengths != 0) requirePixels(bytes, offsets, lengths);
  return found;
}

// More scans than any encoder writes would only keep the decoder busy.
constexpr int maximumJpegScans = 500;

[[noreturn]] void refuse(const char* reason) {
  throw std::runtime_error(reason);
}

void requireSize(const PictureHeader& header) {
  requirePictureSize(header.width, header.height);
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
    const ByteReader bytes = tiffReader(exif);
    return readTiffDirectory(bytes, bytes.u32(4)).orientation;
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
  PictureHeader header{.width = 0, .height = 0};
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
  PictureHeader header{.width = bytes.u32(16), .height = bytes.u32(20)};
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
  PictureHeader header{.width = 0, .height = 0};
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
  PictureHeader header{.width = 0, .height = 0};
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

/// libtiff counts no more either.
constexpr std::size_t mostTiffDirectories = 65'535;

/// Whether a directory says that its picture is a smaller version or a mask of another (TIFF 6.0, section 8). That
/// comes first in it, for its entries are sorted.
bool isPage(const ByteReader& bytes, std::size_t directory) {
  constexpr std::uint32_t thumbnail = 1, mask = 4;
  const bool tellsType = bytes.u16(directory) > 0 && bytes.u16(directory + 2) == subfileTypeTag;
  return !tellsType || (valueOf(bytes, directory + 2, 0) & (thumbnail | mask)) == 0;
}

/// Still and moving pictures of HEVC (ISO/IEC 23008-12, annex B), and pictures whatever they are coded with.
constexpr std::array heicBrands{"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv, "hevx"sv, "mif1"sv, "msf1"sv};

bool isHeic(const ByteReader& bytes) {
  return bytes.matches(4, "ftyp"sv) &&
         std::ranges::any_of(heicBrands, [&](std::string_view brand) { return bytes.matches(8, brand); });
}

}  // namespace

PictureFormat formatOf(std::span<const std::uint8_t> file) {
  const ByteReader bytes = bigEndian(file);
  if (bytes.matches(0, "\xFF\xD8\xFF"sv)) return PictureFormat::jpeg;
  if (bytes.matches(0, "\x89PNG\r\n\x1A\n"sv)) return PictureFormat::png;
  if (bytes.matches(0, "RIFF"sv) && bytes.matches(8, "WEBP"sv)) return PictureFormat::webp;
  if (bytes.matches(0, "II*\0"sv) || bytes.matches(0, "MM\0*"sv)) return PictureFormat::tiff;
  if (bytes.matches(0, "BM"sv) && bytes.size() > 26) return PictureFormat::bmp;
  if (bytes.matches(0, "%PDF-"sv)) return PictureFormat::pdf;
  if (isHeic(bytes)) return PictureFormat::heic;
  refuse("not a picture (JPEG, PNG, WebP, HEIC, BMP, TIFF and PDF can be read)");
}

void requirePictureSize(std::int64_t width, std::int64_t height) {
  if (width < 1 || height < 1) refuse("the picture is damaged");
  if (height > maximumPicturePixels / width)
    throw std::runtime_error("too large: " + std::to_string(width) + " x " + std::to_string(height) +
                             " pixels, at most " + std::to_string(maximumPicturePixels / 1'000'000) + " megapixels");
}

PictureHeader readPictureHeader(std::span<const std::uint8_t> file, PictureFormat format) {
  if (format == PictureFormat::tiff) return readTiffHeader(file, tiffDirectories(file).front());
  const PictureHeader header = format == PictureFormat::jpeg   ? readJpeg(file)
                               : format == PictureFormat::png  ? readPng(file)
                               : format == PictureFormat::webp ? readWebp(file)
                                                               : readBmp(file);
  requireSize(header);
  return header;
}

std::vector<std::size_t> tiffDirectories(std::span<const std::uint8_t> file) {
  const ByteReader bytes = tiffReader(file);
  std::size_t directory = bytes.u32(4);
  std::vector<std::size_t> pages{directory};
  // The chain ends with a zero; one that comes back to itself is over too.
  std::set<std::size_t> seen{0};
  try {
    while (seen.size() <= mostTiffDirectories && seen.insert(directory).second) {
      if (directory != pages.front() && isPage(bytes, directory)) pages.push_back(directory);
      directory = bytes.u32(directory + 2 + std::size_t{12} * bytes.u16(directory));
    }
  } catch (const std::runtime_error&) {
    if (directory != pages.back()) pages.push_back(directory);
  }
  return pages;
}

PictureHeader readTiffHeader(std::span<const std::uint8_t> file, std::size_t directory) {
  const TiffDirectory found = readTiffDirectory(tiffReader(file), directory);
  const PictureHeader header{
      .width = found.width.value_or(0), .height = found.height.value_or(0), .orientation = found.orientation};
  requireSize(header);
  return header;
}

}  // namespace pravik
