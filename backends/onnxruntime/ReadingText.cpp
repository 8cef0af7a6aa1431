#include "backends/onnxruntime/ReadingText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "backends/onnxruntime/SimplifiedForm.h"

namespace pravik::ppocr {
namespace {

constexpr std::string_view middleDot = "·";

/// Marks that look like a middle dot; between two Chinese characters no print has any other, so there the model's
/// choice between them says nothing.
constexpr std::array<std::string_view, 6> dots{".", "•", "‧", "ㆍ", "・", "．"};

/// A space is missing where two letters stand further apart than this many times the line's usual pitch. Words of a
/// narrow font have pitches of up to one and a half times the median, between W and M.
constexpr double wordGap = 1.75;
/// With fewer there is no usual pitch.
constexpr std::size_t fewestPitches = 4;

/// The code point of a three-byte UTF-8 character, 0 for any other length.
char32_t threeByteCodePoint(std::string_view text) {
  if (text.size() != 3) return 0;
  const auto bits = [&](std::size_t i, unsigned mask) {
    return static_cast<char32_t>(static_cast<std::uint8_t>(text[i]) & mask);
  };
  return bits(0, 0x0F) << 12U | bits(1, 0x3F) << 6U | bits(2, 0x3F);
}

bool isChinese(std::string_view text) {
  const char32_t c = threeByteCodePoint(text);
  return c >= 0x4E00 && c <= 0x9FFF;
}

/// A full-width digit or Latin letter as ASCII: the model tells the widths apart by the spacing, which depends on the
/// font. Full-width punctuation is how Chinese text is printed and stays.
std::string narrow(const std::string& text) {
  constexpr char32_t fullWidthOffset = 0xFEE0;
  const char32_t c = threeByteCodePoint(text);
  const bool isFullWidth = (c >= U'０' && c <= U'９') || (c >= U'Ａ' && c <= U'Ｚ') || (c >= U'ａ' && c <= U'ｚ');
  return isFullWidth ? std::string(1, static_cast<char>(c - fullWidthOffset)) : text;
}

bool isLetterOrDigit(const std::string& text) {
  return text.size() == 1 && std::isalnum(static_cast<unsigned char>(text.front())) != 0;
}

/// Steps from each character to the next one where both are Latin letters or digits, else 0.
std::vector<int> latinPitches(std::span<const CtcCharacter> characters, const std::vector<std::string>& texts) {
  std::vector<int> pitches(characters.size(), 0);
  for (std::size_t i = 0; i + 1 < characters.size(); ++i)
    if (isLetterOrDigit(texts[i]) && isLetterOrDigit(texts[i + 1]))
      pitches[i] = characters[i + 1].step - characters[i].step;
  return pitches;
}

/// More steps than these between two letters mean a space that the model did not see: embossed letters stand so wide
/// that it takes the space for part of the spacing.
double widestPitch(std::vector<int> pitches) {
  std::erase(pitches, 0);
  if (pitches.size() < fewestPitches) return std::numeric_limits<double>::max();
  const auto middle = pitches.begin() + static_cast<std::ptrdiff_t>(pitches.size() / 2);
  std::ranges::nth_element(pitches, middle);
  return wordGap * *middle;
}

}  // namespace

std::string readingText(std::span<const CtcCharacter> characters, const KeyList& keys) {
  std::vector<std::string> keyTexts;
  for (const CtcCharacter& character : characters) keyTexts.push_back(narrow(keys.text(character.label)));
  const std::vector<int> pitches = latinPitches(characters, keyTexts);
  const double widest = widestPitch(pitches);
  std::string text;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const std::string& key = keyTexts[i];
    const bool isBetweenChinese =
        i > 0 && i + 1 < characters.size() && isChinese(keyTexts[i - 1]) && isChinese(keyTexts[i + 1]);
    if (isBetweenChinese && std::ranges::find(dots, key) != dots.end())
      text += middleDot;
    else
      text += isChinese(key) ? simplifiedForm(key) : key;
    if (pitches[i] > widest) text += ' ';
  }
  return text;
}

}  // namespace pravik::ppocr
