#pragma once

#include "Platform/ImageCodec.h"

namespace pravik {

/// Reads JPEG, PNG, BMP, WebP, HEIC (its main picture), and all pages of TIFF and PDF; writes PNG and JPEG. Pixels come
/// back upright, with transparent parts laid over white. A truncated JPEG is refused, not filled up with grey. PDF
/// needs the programs of poppler-utils, which run as processes of their own.
class OpenCvImageCodec final : public ImageCodec {
 public:
  PictureFile open(std::vector<std::uint8_t> file) const override;
  PictureFile open(const std::filesystem::path& path) const override;
  std::vector<std::uint8_t> encode(const Bitmap& bitmap, ImageFileFormat format) const override;
};

}  // namespace pravik
