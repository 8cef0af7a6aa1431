#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "Platform/Image.h"

namespace pravik {

/// The formats that pictures are written in.
enum class ImageFileFormat : std::uint8_t { png, jpeg };

/// Pictures above these limits are refused before they are decoded, so that no file can exhaust the memory.
inline constexpr std::int64_t maximumPicturePixels = 100'000'000;
inline constexpr std::uintmax_t maximumPictureFileBytes = std::uintmax_t{64} << 20U;

/// Whether a picture is small enough to be worked on.
inline bool hasAllowedSize(const Bitmap& bitmap) {
  return std::int64_t{bitmap.width()} * bitmap.height() <= maximumPicturePixels;
}

/// Turns files into pictures and back. Failures are std::runtime_error with a text that a user can read
/// ("no such file", "is a directory", "not a picture", "too large: 20000 x 20000 pixels").
class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  /// Decodes a whole file in memory to 8-bit BGRA. The orientation stored in the file is honoured.
  virtual Image decode(std::span<const std::uint8_t> file) const = 0;
  /// Reads and decodes a file.
  virtual Image load(const std::filesystem::path& path) const = 0;
  /// Encodes a picture. JPEG is written at quality 92.
  virtual std::vector<std::uint8_t> encode(const Bitmap& bitmap, ImageFileFormat format) const = 0;
};

}  // namespace pravik
