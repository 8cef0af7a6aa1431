#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Records/Observation.h"

namespace pravik {

/// The name with the one word that is no pinyin as it was embossed, when the other words are pinyin and one letter
/// alone can have been misread: an I for a T, a D for an O or an O for a D, where no Chinese name has what was read
/// ("XTANG", "SHENGOONG", "HAD"). Any other name comes back as it is.
std::string mendedHolder(std::string_view name);

/// Whether all words of a name are syllables of Mandarin in Latin letters.
bool isSpeltInPinyin(std::string_view name);

/// Whether what was taken for a name is a piece of what cards print near it ("VALID THRU", "MEMBER SINCE").
bool isPrintedPhrase(std::string_view name);

/// The holder's name in Chinese that stands behind its label ("持卡人", "姓名") on one line of a bank card, as a social
/// security card has it: two to four characters of which the first is a common surname. Absent when there is none;
/// without the label nothing tells a name from another word.
std::optional<std::string> chineseHolder(const Observations& observations);

}  // namespace pravik
