#pragma once

#include <optional>

#include "Records/IDCardFrontInfo.h"
#include "Records/Observation.h"

namespace pravik {

/// Reads the portrait side of an identity card from its blocks of text.
struct IDCardFrontParser {
  /// The record; absent when no citizen number is found. Any other field that is not found is empty.
  std::optional<IDCardFrontInfo> parse(const Observations& observations) const;
};

}  // namespace pravik
