#pragma once

#include "Platform/ImageCodec.h"

namespace pravik {

/// Reads JPEG, PNG, BMP, WebP and TIFF, the first picture of a file that has several; writes PNG and JPEG. Pixels come
/// back upright, with transparent parts laid over white. A truncated JPEG is refused, not filled up with grey.
class OpenCvImageCodec final : public ImageCodec {
 public:
  Image decode(std::span<const std::uint8_t> file) const override;
  Image load(const std::filesystem::path& path) const override;
  std::vector<std::uint8_t> encode(const Bitmap& bitmap, ImageFileFormat format) const override;
};

}  // namespace pravik
