#pragma once

#include <string>
#include <string_view>

#include "backends/json/Answer.h"
#include "backends/json/Wording.h"

namespace pravik::cli {

/// Columns that a text takes on a terminal: two for a wide character (East Asian Width W and F, Unicode Standard
/// Annex 11), none for a combining mark or a control character.
int displayWidth(std::string_view text);
/// The text with spaces behind it up to the width; unchanged when it is wider.
std::string padded(std::string_view text, int width);

/// An answer for people: the file, then a line for each field with failed checks beside it, or the error in words of
/// their language. Ends with a line end.
std::string asTable(const Answer& answer, Language language);

/// An event of a scan for people, on a line: the time in seconds, the event and its details.
std::string asEventLine(const Json& event);

}  // namespace pravik::cli
