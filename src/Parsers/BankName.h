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

/// Whether an upper-case word is how a bank abbreviates its own name.
bool isBankAbbreviation(std::string_view word);

/// The bank whose telling words are all among these upper-case words, for English names that are broken across
/// lines; absent when no bank's are, or another bank matches as well.
std::optional<std::string> heuristicMatchByWords(const std::set<std::string>& words);

}  // namespace pravik
