#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "Platform/Image.h"

namespace pravik {

/// The formats that pictures are written in.
enum class ImageFileFormat : std::uint8_t { png, jpeg };

/// Pictures above these limits are refused before they are decoded, so that no file can exhaust the memory.
inline constexpr std::int64_t maximumPicturePixels = 100'000'000;
inline constexpr std::uintmax_t maximumPictureFileBytes = std::uintmax_t{64} << 20U;
/// Who hands in a longer document has most likely not meant to.
inline constexpr int maximumPages = 100;

/// Whether a picture is small enough to be worked on.
inline bool hasAllowedSize(const Bitmap& bitmap) {
  return std::int64_t{bitmap.width()} * bitmap.height() <= maximumPicturePixels;
}

/// A file that was opened, of one picture or of several pages.
struct PictureFile {
  /// At least 1; more than `maximumPages` when that many stand in the file, of which the first ones can be decoded.
  int pageCount = 1;
  /// Decodes one page, the first being 0, to 8-bit BGRA, and keeps nothing of it. The orientation stored in the file is
  /// honoured. Fails as the codec does. Several threads may call it at the same time, also when the codec is gone.
  std::function<Image(int page)> decode;
};

/// Turns files into pictures and back. Failures are std::runtime_error with a text that a user can read
/// ("no such file", "is a directory", "not a picture", "too large: 20000 x 20000 pixels").
class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  /// Opens a whole file in memory, and one on the disk. Only its pages are counted; what is wrong with a page is told
  /// when that is decoded.
  virtual PictureFile open(std::vector<std::uint8_t> file) const = 0;
  virtual PictureFile open(const std::filesystem::path& path) const = 0;
  /// The first page, or only picture, of a file in memory, and of one on the disk.
  Image decode(std::span<const std::uint8_t> file) const { return open({file.begin(), file.end()}).decode(0); }
  Image load(const std::filesystem::path& path) const { return open(path).decode(0); }
  /// Encodes a picture. JPEG is written at quality 92.
  virtual std::vector<std::uint8_t> encode(const Bitmap& bitmap, ImageFileFormat format) const = 0;
};

}  // namespace pravik
