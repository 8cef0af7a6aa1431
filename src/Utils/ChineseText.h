#pragma once

#include <string>
#include <string_view>

namespace pravik {

/// The text with the characters that GB 2312, the set of simplified print, does not hold in their simplified form:
/// where both forms look alike in small print, an engine that knows both sometimes picks the traditional one. A
/// character without such a form stays, as rare ones in names.
std::string withSimplifiedCharacters(std::string_view text);

/// The text with every mark between two Chinese characters that looks like a middle dot as "·", without spaces around
/// it: no print has another there.
std::string withMiddleDots(std::string_view text);

}  // namespace pravik
