#pragma once

#include <optional>
#include <string_view>

#include "BankCardInfo.h"
#include "Core/TextRecognizer.h"
#include "IDCardBackInfo.h"
#include "IDCardFrontInfo.h"
#include "backends/json/Answer.h"

namespace pravik {

/// Whether the last of the 18 characters is the check character of the others (GB 11643-1999, which uses ISO 7064
/// MOD 11-2).
bool hasValidCheckCharacter(std::string_view citizenNumber);

/// {"checkDigit":…,"birthDateMatches":…,"genderMatches":…}: whether the number agrees with itself and with what is
/// printed beside it; null where there is nothing to compare.
Json checksOf(const IDCardFrontInfo& info);
/// {"startBeforeEnd":…}: a card without an end date passes; null where there is nothing to compare.
Json checksOf(const IDCardBackInfo& info);

/// {"luhn":…}: whether the card number's check digit is right.
Json checksOf(const BankCardInfo& info);

/// {"result":…,"checks":…}: a card's record and what it tells about itself.
template <class Info>
Answer recordAnswer(const Info& info) {
  return {{"result", toJson(info)}, {"checks", checksOf(info)}};
}

/// The same, or the error that kept a card from being read.
template <class Info>
Answer cardAnswer(const Result<Info>& result) {
  return result ? recordAnswer(*result) : answerOf(result.error());
}

/// The record that a card's parser makes of observations, or insufficientText.
template <class Parser>
Answer parsedAnswer(const Observations& observations) {
  const auto info = Parser{}.parse(observations);
  return info ? recordAnswer(*info) : answerOf(OCRError::insufficientText());
}

/// How a failed check is told to a person.
struct CheckText {
  std::string_view check;
  /// The field of the record that it stands beside.
  std::string_view field;
  std::string_view failure;
};

/// Absent for a check that is not known.
std::optional<CheckText> checkText(std::string_view check);

}  // namespace pravik
