#include "Parsers/CardNumber.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Utils/Text.h"

namespace pravik {

namespace {

constexpr std::size_t minimumLength = 16;
constexpr std::size_t maximumLength = 19;
constexpr std::size_t groupLength = 4;

/// Hotlines and area codes that are printed on cards.
constexpr std::array<std::string_view, 5> telephonePrefixes{"400", "800", "021", "010", "086"};
/// The first two digits that a number beginning with 3 or 6 may have.
constexpr std::array<std::string_view, 9> networkPrefixes{"30", "34", "35", "36", "37", "38", "60", "62", "68"};
/// The second digit that a number beginning with 5 may have.
constexpr char lowestAfterFive = '1';
constexpr char highestAfterFive = '8';

bool hasNetworkPrefix(std::string_view digits) {
  switch (digits[0]) {
    case '4':
    case '9':
      return true;
    case '5':
      return lowestAfterFive <= digits[1] && digits[1] <= highestAfterFive;
    default:
      return std::ranges::find(networkPrefixes, digits.substr(0, 2)) != networkPrefixes.end();
  }
}

}  // namespace

bool isValidCardNumber(std::string_view digits) {
  if (digits.size() < minimumLength || digits.size() > maximumLength) return false;
  if (!std::ranges::all_of(digits, isAsciiDigit)) return false;
  if (std::ranges::find(telephonePrefixes, digits.substr(0, 3)) != telephonePrefixes.end()) return false;
  return hasNetworkPrefix(digits);
}

bool luhnCheck(std::string_view digits) {
  // The repairs check hundreds of numbers, all of them plain.
  if (!std::ranges::all_of(digits, isAsciiDigit)) {
    const std::string plain = withAsciiDigits(digits);
    return std::ranges::all_of(plain, isAsciiDigit) && luhnCheck(plain);
  }
  int sum = 0;
  for (std::size_t fromRight = 0; fromRight < digits.size(); ++fromRight) {
    int value = digits[digits.size() - 1 - fromRight] - '0';
    if (fromRight % 2 == 1) value *= 2;
    sum += value > 9 ? value - 9 : value;
  }
  return sum % 10 == 0;
}

std::string formatCardNumber(std::string_view digits) {
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && i % groupLength == 0) text += ' ';
    text += digits[i];
  }
  return text;
}

}  // namespace pravik
