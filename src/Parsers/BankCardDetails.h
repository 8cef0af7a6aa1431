#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Records/BankCardInfo.h"

namespace pravik {

/// The type that a card's text names, or that its number tells: one of 19 digits is a debit card's. `cardNumber` may
/// be empty or in its display form. Absent when neither tells.
std::optional<BankCardInfo::CardType> extractCardType(std::string_view text, std::string_view cardNumber);

/// The holder's name as embossed: two or three words of Latin capitals on one line that are no words of the card
/// itself. Absent when there is none.
std::optional<std::string> extractCardholderName(std::string_view text);

}  // namespace pravik
