#pragma once

#include "Platform/ImageRenderer.h"

namespace pravik {

/// Renders all filters of the port on the processor. Grey pictures are rendered as grey pictures.
class OpenCvImageRenderer final : public ImageRenderer {
 public:
  std::optional<Bitmap> render(const Bitmap& bitmap, std::span<const ImageFilter> filters) const override;
  std::optional<Bitmap> greyThumbnail(const Bitmap& bitmap, int width, int height) const override;
};

}  // namespace pravik
