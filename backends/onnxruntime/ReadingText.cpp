#include "backends/onnxruntime/ReadingText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "backends/onnxruntime/SimplifiedForm.h"

namespace pravik::ppocr {
namespace {

constexpr std::string_view middleDot = "·";

/// Marks that look like a middle dot; between two Chinese characters no print has any other, so there the model's
/// choice between them says nothing.
constexpr std::array<std::string_view, 6> dots{".", "•", "‧", "ㆍ", "・", "．"};

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

}  // namespace

std::string readingText(std::span<const CtcCharacter> characters, const KeyList& keys) {
  std::string text;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const auto& key = keys.text(characters[i].label);
    const bool isBetweenChinese = i > 0 && i + 1 < characters.size() && isChinese(keys.text(characters[i - 1].label)) &&
                                  isChinese(keys.text(characters[i + 1].label));
    if (isBetweenChinese && std::ranges::find(dots, key) != dots.end())
      text += middleDot;
    else
      text += isChinese(key) ? simplifiedForm(key) : narrow(key);
  }
  return text;
}

}  // namespace pravik::ppocr
