#include "Records/BankCardInfo.h"

#include <algorithm>
#include <cstddef>

namespace pravik {

namespace {

constexpr std::array<std::string_view, 3> rawValues{"借记卡", "信用卡", "预付卡"};

}  // namespace

std::optional<BankCardInfo::CardType> BankCardInfo::cardTypeFromRawValue(std::string_view rawValue) {
  const auto* found = std::ranges::find(rawValues, rawValue);
  if (found == rawValues.end()) return std::nullopt;
  return allCardTypes[static_cast<std::size_t>(found - rawValues.begin())];
}

std::string_view rawValue(BankCardInfo::CardType type) {
  return rawValues[static_cast<std::size_t>(type)];
}

std::string_view localizedName(BankCardInfo::CardType type) {
  return rawValue(type);
}

}  // namespace pravik
