#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace pravik {

/// The text with the traditional characters that occur in bank names as simplified ones.
std::string normalizeTraditional(std::string_view text);

/// The Chinese name of the bank that a card's text names, in Chinese or English, by its web domain or by its
/// abbreviation; absent when none is recognised. A Chinese name that no table covers comes back as it is printed.
std::optional<std::string> extractBankName(std::string_view text);

/// Whether a bank calls itself by this one upper-case word: its abbreviation, or all of its name.
bool isBankWord(std::string_view word);

/// Whether upper-case words stand one after the other in a bank's English name.
bool isInEnglishBankName(std::string_view words);

/// The full and short Chinese names of the banks that are known by one, all of which end in "银行".
const std::set<std::string_view>& chineseBankNames();

/// The bank whose telling words are all among these upper-case words, for English names that are broken across
/// lines; absent when no bank's are, or another bank matches as well.
std::optional<std::string> heuristicMatchByWords(const std::set<std::string>& words);

}  // namespace pravik
