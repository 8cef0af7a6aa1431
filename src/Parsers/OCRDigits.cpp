#include "Parsers/OCRDigits.h"

#include <algorithm>
#include <array>

#include "Utils/Text.h"

namespace pravik {

namespace {

constexpr std::array<OCRDigitCorrection, 26> corrections{{
    {"O", '0'}, {"o", '0'}, {"D", '0'}, {"I", '1'}, {"i", '1'}, {"l", '1'}, {"L", '1'}, {"！", '1'}, {"Z", '2'},
    {"z", '2'}, {"$", '2'}, {"e", '2'}, {"E", '3'}, {"A", '4'}, {"H", '4'}, {"#", '4'}, {"S", '5'},  {"s", '5'},
    {"G", '6'}, {"b", '6'}, {"f", '6'}, {"h", '6'}, {"T", '7'}, {"B", '8'}, {"g", '9'}, {"q", '9'},
}};
constexpr std::string_view ambiguousB = "B";

constexpr std::array<OCRDigitCorrection, corrections.size()> withBAsSix() {
  auto map = corrections;
  for (OCRDigitCorrection& row : map)
    if (row.character == ambiguousB) row.digit = '6';
  return map;
}
constexpr auto correctionsB6 = withBAsSix();

/// As many characters corrected or dropped make a text something else than a number.
constexpr int tooManyCorrections = 4;

}  // namespace

std::span<const OCRDigitCorrection> ocrDigitCorrections() {
  return corrections;
}

std::span<const OCRDigitCorrection> ocrDigitCorrectionsB6() {
  return correctionsB6;
}

std::optional<std::string> correctOCRDigitsUsing(std::string_view text, std::span<const OCRDigitCorrection> map) {
  std::string digits;
  int corrected = 0;
  for (const std::string_view character : characters(text)) {
    if (const std::string digit = asciiDigits(character); !digit.empty()) {
      digits += digit;
      continue;
    }
    if (character == " " || character == "-") continue;
    if (++corrected == tooManyCorrections) return std::nullopt;
    const auto row = std::ranges::find(map, character, &OCRDigitCorrection::character);
    if (row != map.end()) digits += row->digit;
  }
  return digits;
}

std::vector<OCRDigitVariant> ocrCorrectedVariants(std::string_view text) {
  std::vector<OCRDigitVariant> variants;
  if (auto digits = correctOCRDigitsUsing(text, corrections)) variants.push_back({*std::move(digits), ""});
  if (!contains(text, ambiguousB)) return variants;
  auto digits = correctOCRDigitsUsing(text, correctionsB6);
  if (digits && (variants.empty() || *digits != variants.front().digits))
    variants.push_back({*std::move(digits), "/B6"});
  return variants;
}

}  // namespace pravik
