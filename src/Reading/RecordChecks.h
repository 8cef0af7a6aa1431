#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Records/DocumentKind.h"

namespace pravik {

/// Something that a record tells about itself: whether one of its fields agrees with itself or with another.
struct CheckKind {
  /// Such as "checkDigit".
  std::string_view name;
  /// The field that it stands beside.
  std::string_view field;
  /// What a failure means, for people, in English.
  std::string_view failure;
  /// Whether it is that of a number's own check digit.
  bool isOfNumber = false;
};

/// The check of this name; null for one that is not known.
const CheckKind* checkNamed(std::string_view name);

struct RecordCheck {
  const CheckKind& kind;
  /// Absent when there is nothing to compare.
  std::optional<bool> passed;
};

/// The checks of the record's kind; none for a code.
std::vector<RecordCheck> checksOf(const Record& record);

/// Whether the last of the 18 characters is the check character of the others (GB 11643-1999, which uses ISO 7064
/// MOD 11-2).
bool hasValidCheckCharacter(std::string_view citizenNumber);

}  // namespace pravik
