#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <tl/expected.hpp>

#include "Platform/Image.h"
#include "Platform/ImageCodec.h"

namespace pravik::cli {

/// The picture in a file, or in the standard input when the file is "-"; or why it cannot be read, in words.
tl::expected<Image, std::string> readPicture(const std::string& file, const ImageCodec& codec, std::istream& in);

/// The next line without its end, or nothing at the end of the input. Of a line that is too long to be parsed, just
/// enough is kept to tell.
std::optional<std::string> nextLine(std::istream& in);
/// Everything up to the end of the input, or just enough of it to tell that it is too long.
std::string wholeText(std::istream& in);

}  // namespace pravik::cli
