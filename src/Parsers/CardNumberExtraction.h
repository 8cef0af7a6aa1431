#pragma once

#include <optional>
#include <string>

#include "Records/Observation.h"

namespace pravik {

/// A card number found in a reading.
struct ExtractedCardNumber {
  /// Plain digits that pass isValidCardNumber(); they fail the Luhn check when no safe repair was found.
  std::string digits;
  /// The digits as they were read, before anything was completed, replaced or repaired.
  std::string digitsAsRead;

  bool operator==(const ExtractedCardNumber&) const = default;
};

/// Finds the card number in a reading's blocks. Candidates are collected in every way that a number may have been
/// read, in one block or several, with letters for digits or without its first group, and ranked: what passes the
/// Luhn check comes first. Absent when no candidate is a valid number.
std::optional<ExtractedCardNumber> extractCardNumber(const Observations& observations);

}  // namespace pravik
