#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pravik {

// Text is UTF-8. An ill-formed byte sequence counts as U+FFFD and never breaks a function; all of them take time
// proportional to the length of the text.

/// The characters as a reader counts them (extended grapheme clusters, Unicode Standard Annex 29); views into `text`.
std::vector<std::string_view> characters(std::string_view text);
/// Their number.
std::size_t characterCount(std::string_view text);

/// The code points of a text, and the text of code points.
std::u32string codePoints(std::string_view text);
std::string utf8(std::u32string_view codePoints);
/// Whether a code point is a Chinese character: an ideograph of any plane.
bool isIdeograph(char32_t codePoint);

/// The text without space separators and tabs at both ends. Line ends stay.
std::string_view trimmed(std::string_view text);
/// The text without any of these code points at both ends.
std::string_view trimmed(std::string_view text, std::u32string_view codePoints);
/// The text without any of these code points at its start.
std::string_view trimmedStart(std::string_view text, std::u32string_view codePoints);
/// The pieces between space separators and tabs; never an empty one.
std::vector<std::string_view> splitAtWhitespace(std::string_view text);
/// The lines between line feeds; empty ones too, at least one.
std::vector<std::string_view> splitAtLineFeeds(std::string_view text);

/// Whether a byte is one of the digits 0 to 9.
constexpr bool isAsciiDigit(char character) {
  return character >= '0' && character <= '9';
}
/// Only the decimal digits, those of every script as the ASCII digit.
std::string asciiDigits(std::string_view text);
/// The whole text with the decimal digits of every script as the ASCII digit.
std::string withAsciiDigits(std::string_view text);

bool contains(std::string_view text, std::string_view part);
bool containsAny(std::string_view text, std::span<const std::string_view> parts);
/// The text with every occurrence of `part`, which must not be empty, replaced.
std::string replacingAll(std::string_view text, std::string_view part, std::string_view replacement);
/// The text without any occurrence of `part`, which must not be empty.
std::string removingAll(std::string_view text, std::string_view part);
/// The pieces one after the other with the separator between them.
std::string joined(std::span<const std::string> pieces, std::string_view separator);

/// Upper and lower case by the rules of Unicode, independent of the language.
std::string uppercased(std::string_view text);
std::string lowercased(std::string_view text);

}  // namespace pravik
