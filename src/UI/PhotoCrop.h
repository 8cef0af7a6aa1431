#pragma once

#include <optional>
#include <string>

#include "Platform/Geometry.h"
#include "Platform/Image.h"

namespace pravik {

/// The part of a photo that the scanner's cut-out showed, 5 % larger on each side, with the photo's orientation and
/// scale. `cutout` is normalised to 0...1 of the stored pixels, origin at the top left. Nothing when there is no
/// cut-out, no picture, or what is left inside the picture is not wider than 100 pixels and taller than 50.
std::optional<Image> cropImageToCutout(const Image& image, const std::optional<Rect>& cutout);

/// An image's extent in points as it stands upright, such as "(400.0, 300.0)"; zero without pixels.
std::string sizeDescription(const Image& image);

}  // namespace pravik
