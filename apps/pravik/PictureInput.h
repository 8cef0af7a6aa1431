#pragma once

#include <iosfwd>
#include <string>
#include <tl/expected.hpp>

#include "Platform/Image.h"
#include "Platform/ImageCodec.h"

namespace pravik::cli {

/// The picture in a file, or in the standard input when the file is "-"; or why it cannot be read, in words.
tl::expected<Image, std::string> readPicture(const std::string& file, const ImageCodec& codec, std::istream& in);

}  // namespace pravik::cli
