#include "backends/opencv/files/HevcSize.h"

#include <cstddef>
#include <vector>

namespace pravik {
namespace {

/// Reads numbers bit by bit; past the end all bits are zero.
class BitReader {
 public:
  /// Leaves out the bytes that keep start codes out of the data (7.4.2).
  explicit BitReader(std::span<const std::uint8_t> unit) {
    int zeros = 0;
    for (const std::uint8_t byte : unit) {
      const bool isData = zeros < 2 || byte != 3;
      if (isData) bytes_.push_back(byte);
      zeros = isData && byte == 0 ? zeros + 1 : 0;
    }
  }

  std::uint32_t bits(int count) {
    std::uint32_t value = 0;
    for (; count > 0; --count, ++at_) value = value << 1U | (at_ < size() ? bytes_[at_ / 8] >> (7 - at_ % 8) & 1U : 0U);
    return value;
  }
  void skip(std::size_t count) { at_ += count; }
  /// An Exp-Golomb code (9.2).
  std::int64_t number() {
    int zeros = 0;
    while (zeros < 32 && bits(1) == 0) ++zeros;
    return (std::int64_t{1} << zeros) - 1 + bits(zeros);
  }
  bool isPastTheEnd() const { return at_ > size(); }

 private:
  std::size_t size() const { return 8 * bytes_.size(); }

  std::vector<std::uint8_t> bytes_;
  std::size_t at_ = 0;
};

constexpr std::size_t profileBits = 88, levelBits = 8;

void skipProfiles(BitReader& reader, int subLayers) {
  reader.skip(profileBits + levelBits);
  std::size_t present = 0;
  for (int i = 0; i < subLayers; ++i) {
    if (reader.bits(1) != 0) present += profileBits;
    if (reader.bits(1) != 0) present += levelBits;
  }
  // Places for eight are there as soon as one is.
  if (subLayers > 0) reader.skip(2 * static_cast<std::size_t>(8 - subLayers));
  reader.skip(present);
}

}  // namespace

std::optional<std::int64_t> codedPixels(std::span<const std::uint8_t> sequenceParameterSet) {
  constexpr std::size_t unitHeader = 16;
  constexpr int separateColours = 3;
  BitReader reader(sequenceParameterSet);
  reader.skip(unitHeader + 4);
  const int subLayers = static_cast<int>(reader.bits(3));
  reader.skip(1);
  skipProfiles(reader, subLayers);
  reader.number();
  if (reader.number() == separateColours) reader.skip(1);
  const std::int64_t width = reader.number(), height = reader.number();
  constexpr std::int64_t mostOfASide = 1 << 30;
  if (reader.isPastTheEnd() || width > mostOfASide || height > mostOfASide) return std::nullopt;
  return width * height;
}

}  // namespace pravik
