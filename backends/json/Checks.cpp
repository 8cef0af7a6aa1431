#include "backends/json/Checks.h"

#include <algorithm>
#include <array>

#include "Parsers/CardNumber.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr std::size_t citizenNumberLength = 18;
/// 2^(17 - i) mod 11 for the i-th character, and the check character for each remainder.
constexpr std::array<int, citizenNumberLength - 1> weights{7, 9, 10, 5, 8, 4, 2, 1, 6, 3, 7, 9, 10, 5, 8, 4, 2};
constexpr std::string_view checkCharacters = "10X98765432";

constexpr std::array<CheckText, 5> checkTexts{{
    {"checkDigit", "idNumber", "the check character is wrong"},
    {"birthDateMatches", "birthDate", "differs from the identity number"},
    {"genderMatches", "gender", "differs from the identity number"},
    {"startBeforeEnd", "validityPeriod", "ends before it starts"},
    {"luhn", "cardNumber", "the check digit is wrong"},
}};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isCitizenNumber(std::string_view number) {
  return number.size() == citizenNumberLength && std::ranges::all_of(number.substr(0, weights.size()), isDigit);
}

Json birthDateMatches(const IDCardFrontInfo& info) {
  const std::string printed = info.birthYear + info.birthMonth + info.birthDay;
  if (printed.empty() || !isCitizenNumber(info.idNumber)) return nullptr;
  return printed == info.idNumber.substr(6, 8);
}

/// The 17th digit is odd for a man and even for a woman.
Json genderMatches(const IDCardFrontInfo& info) {
  if (info.gender.empty() || !isCitizenNumber(info.idNumber)) return nullptr;
  const bool odd = (info.idNumber[16] - '0') % 2 == 1;
  return info.gender == (odd ? "男" : "女");
}

}  // namespace

bool hasValidCheckCharacter(std::string_view citizenNumber) {
  if (!isCitizenNumber(citizenNumber)) return false;
  int sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) sum += (citizenNumber[i] - '0') * weights[i];
  return citizenNumber.back() == checkCharacters[static_cast<std::size_t>(sum % 11)];
}

Json checksOf(const IDCardFrontInfo& info) {
  return {{"checkDigit", hasValidCheckCharacter(info.idNumber)},
          {"birthDateMatches", birthDateMatches(info)},
          {"genderMatches", genderMatches(info)}};
}

Json checksOf(const IDCardBackInfo& info) {
  Json startBeforeEnd = nullptr;
  if (info.startDate && info.isLongTerm) startBeforeEnd = true;
  if (info.startDate && info.endDate) startBeforeEnd = *info.startDate < *info.endDate;
  return {{"startBeforeEnd", startBeforeEnd}};
}

Json checksOf(const BankCardInfo& info) {
  return {{"luhn", luhnCheck(asciiDigits(info.cardNumber))}};
}

std::optional<CheckText> checkText(std::string_view check) {
  const auto found = std::ranges::find(checkTexts, check, &CheckText::check);
  if (found == checkTexts.end()) return std::nullopt;
  return *found;
}

}  // namespace pravik
