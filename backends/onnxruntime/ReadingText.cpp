#include "backends/onnxruntime/ReadingText.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <limits>
#include <vector>

#include "Utils/ChineseText.h"
#include "Utils/Text.h"

namespace pravik::ppocr {
namespace {

/// A space is missing where two letters stand further apart than this many times the line's usual pitch. Words of a
/// narrow font have pitches of up to one and a half times the median, between W and M.
constexpr double wordGap = 1.75;
/// With fewer there is no usual pitch.
constexpr std::size_t fewestPitches = 4;

/// A full-width digit or Latin letter as ASCII: the model tells the widths apart by the spacing, which depends on the
/// font. Full-width punctuation is how Chinese text is printed and stays.
std::string narrow(const std::string& text) {
  constexpr char32_t fullWidthOffset = 0xFEE0;
  const std::u32string points = codePoints(text);
  const char32_t c = points.size() == 1 ? points.front() : 0;
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

/// More steps than these between two letters mean a space that the model did not see: some letters stand so wide
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
    text += keyTexts[i];
    if (pitches[i] > widest) text += ' ';
  }
  return withMiddleDots(withSimplifiedCharacters(text));
}

}  // namespace pravik::ppocr
