#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pravik {

/// A character that is read in place of a digit, and the digit.
struct OCRDigitCorrection {
  std::string_view character;
  char digit;
};

/// What the letters and signs stand for that are read in place of digits.
std::span<const OCRDigitCorrection> ocrDigitCorrections();
/// The same with an upper-case B for a 6: on embossed cards it is read for a 6 as often as for an 8.
std::span<const OCRDigitCorrection> ocrDigitCorrectionsB6();

/// One way to read a text as digits.
struct OCRDigitVariant {
  std::string digits;
  /// Empty, or "/B6" when the B was taken for a 6.
  std::string_view label;
};

/// The ASCII digits of a text: decimal digits of every script, and what the map has for other characters. Spaces and
/// hyphens are skipped. Absent when four or more characters had to be corrected or dropped.
std::optional<std::string> correctOCRDigitsUsing(std::string_view text, std::span<const OCRDigitCorrection> map);

/// The readings of a text as digits, at most two and never two the same.
std::vector<OCRDigitVariant> ocrCorrectedVariants(std::string_view text);

}  // namespace pravik
