#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pravik {

/// What a bank card says.
struct BankCardInfo {
  enum class CardType : std::uint8_t { debit, credit, prepaid };

  static constexpr std::array allCardTypes{CardType::debit, CardType::credit, CardType::prepaid};
  /// The type with exactly this raw value ("借记卡"); absent for any other text.
  static std::optional<CardType> cardTypeFromRawValue(std::string_view rawValue);

  /// The accepted number in its display form: groups of four digits with one space between them.
  std::string cardNumber;
  /// The digits as they were read, before any repair, without separators.
  std::string rawCardNumber;
  /// The issuing bank; absent when it was not recognised.
  std::optional<std::string> bankName;
  /// Absent when it was not recognised.
  std::optional<CardType> cardType;
  /// The holder's name as embossed, in Latin letters or Chinese; absent when it was not found.
  std::optional<std::string> cardholderName;

  bool operator==(const BankCardInfo&) const = default;
};

/// The text that stands for a card type: "借记卡", "信用卡" or "预付卡".
std::string_view rawValue(BankCardInfo::CardType type);
/// The text shown to users; the same as the raw value.
std::string_view localizedName(BankCardInfo::CardType type);

}  // namespace pravik
