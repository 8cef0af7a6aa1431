#pragma once

#include <optional>
#include <string>

#include "Records/BankCardInfo.h"
#include "Records/Observation.h"

namespace pravik {

/// What a reading of a bank card gave, with or without a number.
struct PartialBankCardInfo {
  /// In display form; absent when none was found.
  std::optional<std::string> cardNumber;
  std::optional<std::string> bankName;
  std::optional<BankCardInfo::CardType> cardType;
  std::optional<std::string> cardholderName;

  bool operator==(const PartialBankCardInfo&) const = default;
};

/// Reads a bank card from its blocks of text.
struct BankCardParser {
  /// The record; absent when no card number is found. Its number may fail the Luhn check: then no better one was
  /// read, and luhnCheck() of its digits tells.
  std::optional<BankCardInfo> parse(const Observations& observations) const;
  /// The same for a reading whose number may be missing.
  PartialBankCardInfo parsePartialInfo(const Observations& observations) const;
};

}  // namespace pravik
