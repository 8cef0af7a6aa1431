#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>

namespace pravik {

/// Reads whole numbers out of a file in memory. Every read past the end throws std::runtime_error.
class ByteReader {
 public:
  ByteReader(std::span<const std::uint8_t> bytes, std::endian order) : bytes_(bytes), order_(order) {}

  std::size_t size() const { return bytes_.size(); }
  std::uint8_t u8(std::size_t at) const { return part(at, 1)[0]; }
  std::uint16_t u16(std::size_t at) const { return static_cast<std::uint16_t>(number(at, 2)); }
  std::uint32_t u32(std::size_t at) const { return number(at, 4); }
  /// A number of three bytes.
  std::uint32_t u24(std::size_t at) const { return number(at, 3); }

  /// Whether these bytes stand there; false past the end.
  bool matches(std::size_t at, std::string_view text) const {
    if (at > size() || text.size() > size() - at) return false;
    for (std::size_t i = 0; i < text.size(); ++i)
      if (bytes_[at + i] != static_cast<std::uint8_t>(text[i])) return false;
    return true;
  }

  std::span<const std::uint8_t> part(std::size_t at, std::size_t length) const {
    if (at > size() || length > size() - at) throw std::runtime_error("the file is truncated");
    return bytes_.subspan(at, length);
  }

 private:
  std::uint32_t number(std::size_t at, std::size_t length) const {
    const auto digits = part(at, length);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < length; ++i)
      value = value << 8U | digits[order_ == std::endian::big ? i : length - 1 - i];
    return value;
  }

  std::span<const std::uint8_t> bytes_;
  std::endian order_;
};

}  // namespace pravik
