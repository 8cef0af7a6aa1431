#include "Reading/RecordChecks.h"

#include <algorithm>
#include <array>
#include <variant>

#include "Parsers/CardNumber.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr std::size_t citizenNumberLength = 18;
/// 2^(17 - i) mod 11 for the i-th character, and the check character for each remainder.
constexpr std::array<int, citizenNumberLength - 1> weights{7, 9, 10, 5, 8, 4, 2, 1, 6, 3, 7, 9, 10, 5, 8, 4, 2};
constexpr std::string_view checkCharacters = "10X98765432";

constexpr CheckKind checkDigit{"checkDigit", "idNumber", "the check character is wrong", true};
constexpr CheckKind birthDate{"birthDateMatches", "birthDate", "differs from the identity number"};
constexpr CheckKind gender{"genderMatches", "gender", "differs from the identity number"};
constexpr CheckKind validity{"startBeforeEnd", "validityPeriod", "ends before it starts"};
constexpr CheckKind luhn{"luhn", "cardNumber", "the check digit is wrong", true};
constexpr std::array allChecks{&checkDigit, &birthDate, &gender, &validity, &luhn};

bool isCitizenNumber(std::string_view number) {
  return number.size() == citizenNumberLength && std::ranges::all_of(number.substr(0, weights.size()), isAsciiDigit);
}

std::optional<bool> birthDateMatches(const IDCardFrontInfo& info) {
  const std::string printed = info.birthYear + info.birthMonth + info.birthDay;
  if (printed.empty() || !isCitizenNumber(info.idNumber)) return std::nullopt;
  return printed == info.idNumber.substr(6, 8);
}

/// The 17th digit is odd for a man and even for a woman.
std::optional<bool> genderMatches(const IDCardFrontInfo& info) {
  if (info.gender.empty() || !isCitizenNumber(info.idNumber)) return std::nullopt;
  const bool odd = (info.idNumber[16] - '0') % 2 == 1;
  return info.gender == (odd ? "男" : "女");
}

/// A card without an end date passes.
std::optional<bool> startBeforeEnd(const IDCardBackInfo& info) {
  if (info.startDate && info.endDate) return *info.startDate < *info.endDate;
  return info.startDate && info.isLongTerm ? std::optional(true) : std::nullopt;
}

struct Checks {
  std::vector<RecordCheck> operator()(const IDCardFrontInfo& info) const {
    return {{checkDigit, hasValidCheckCharacter(info.idNumber)},
            {birthDate, birthDateMatches(info)},
            {gender, genderMatches(info)}};
  }
  std::vector<RecordCheck> operator()(const IDCardBackInfo& info) const { return {{validity, startBeforeEnd(info)}}; }
  std::vector<RecordCheck> operator()(const BankCardInfo& info) const {
    return {{luhn, luhnCheck(asciiDigits(info.cardNumber))}};
  }
  std::vector<RecordCheck> operator()(const CodeScanResult& /*code*/) const { return {}; }
};

}  // namespace

const CheckKind* checkNamed(std::string_view name) {
  const auto* const found = std::ranges::find(allChecks, name, [](const CheckKind* check) { return check->name; });
  return found == allChecks.end() ? nullptr : *found;
}

std::vector<RecordCheck> checksOf(const Record& record) {
  return std::visit(Checks{}, record);
}

bool hasValidCheckCharacter(std::string_view citizenNumber) {
  if (!isCitizenNumber(citizenNumber)) return false;
  int sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) sum += (citizenNumber[i] - '0') * weights[i];
  return citizenNumber.back() == checkCharacters[static_cast<std::size_t>(sum % 11)];
}

}  // namespace pravik
