#pragma once

#include <iosfwd>
#include <optional>
#include <string>

namespace pravik::cli {

/// The next line without its end, or nothing at the end of the input. Of a line that is too long to be parsed, just
/// enough is kept to tell.
std::optional<std::string> nextLine(std::istream& in);
/// Everything up to the end of the input, or just enough of it to tell that it is too long.
std::string wholeText(std::istream& in);

}  // namespace pravik::cli
