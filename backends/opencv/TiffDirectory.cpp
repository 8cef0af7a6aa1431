#include "backends/opencv/TiffDirectory.h"

#include <algorithm>
#include <cstddef>

#include "backends/opencv/ByteReader.h"

namespace pravik {
namespace {

constexpr std::uint16_t widthTag = 0x100, heightTag = 0x101, orientationTag = 0x112;
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

}  // namespace

TiffDirectory readTiffDirectory(std::span<const std::uint8_t> tiff) {
  const bool bigEndian = ByteReader(tiff, std::endian::big).matches(0, "MM");
  const ByteReader bytes(tiff, bigEndian ? std::endian::big : std::endian::little);
  const std::size_t directory = bytes.u32(4);
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

}  // namespace pravik
