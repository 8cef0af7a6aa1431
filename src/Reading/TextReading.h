#pragma once

#include <string>

#include "Platform/Image.h"
#include "Reading/ReadingParts.h"
#include "Records/DocumentKind.h"

namespace pravik {

/// All text on a picture: blocks of a line joined with a space, lines with a line feed. The scene decides how the
/// picture is prepared. Throws invalidImage, or what the engine throws.
std::string readText(const ReadingParts& parts, const Image& image, SceneType scene);

}  // namespace pravik
