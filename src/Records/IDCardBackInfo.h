#pragma once

#include <optional>
#include <string>

namespace pravik {

/// What the emblem side of an identity card says.
struct IDCardBackInfo {
  /// The police office that issued the card; empty when it was not found.
  std::string issuingAuthority;
  /// Such as "20150301-20350301", "20150301-长期" or "长期"; empty when it was not found.
  std::string validityPeriod;
  /// Eight digits: year, month, day.
  std::optional<std::string> startDate;
  /// Eight digits; absent for a card without an end date.
  std::optional<std::string> endDate;
  /// Whether the card is valid for good.
  bool isLongTerm = false;

  bool operator==(const IDCardBackInfo&) const = default;
};

}  // namespace pravik
