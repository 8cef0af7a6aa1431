#pragma once

#include <optional>
#include <span>
#include <variant>

#include "Platform/Bitmap.h"

namespace pravik {

/// Saturation towards the Rec. 709 luma (1 = unchanged), then a brightness offset (0 = unchanged), then contrast
/// about 0.5 (1 = unchanged), on gamma-encoded values of 0 to 1, clamped at the end.
struct ColorControls {
  double contrast = 1;
  double brightness = 0;
  double saturation = 1;
  bool operator==(const ColorControls&) const = default;
};

/// Adds `sharpness` times the difference between a pixel's luma and its blurred luma to all three channels.
/// `radius` is that of the blur in pixels; the blur never covers less than the 3 x 3 neighbourhood.
struct SharpenLuminance {
  double sharpness = 0;
  double radius = 0;
  bool operator==(const SharpenLuminance&) const = default;
};

/// Cuts out the quadrilateral and straightens it to an upright rectangle whose sides are the longer of the
/// quadrilateral's opposite sides. Corners in pixels, origin at the lower left of the picture.
struct PerspectiveCorrection {
  Quadrilateral corners;
  bool operator==(const PerspectiveCorrection&) const = default;
};

using ImageFilter = std::variant<ColorControls, SharpenLuminance, PerspectiveCorrection>;

/// Renders filters over a picture.
class ImageRenderer {
 public:
  virtual ~ImageRenderer() = default;

  /// The picture after all filters, in order, rendered in one go. A filter that the renderer lacks is skipped;
  /// nothing when the rendering fails.
  virtual std::optional<Bitmap> render(const Bitmap& bitmap, std::span<const ImageFilter> filters) const = 0;
  /// The whole picture scaled to a grey picture of the given size, whatever its shape; nothing when it fails.
  virtual std::optional<Bitmap> greyThumbnail(const Bitmap& bitmap, int width, int height) const = 0;
};

}  // namespace pravik
