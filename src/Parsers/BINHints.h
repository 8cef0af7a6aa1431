#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Records/Observation.h"

namespace pravik {

/// The short groups of digits that may repeat the card number's beginning (the BIN, issuer identification number),
/// which many cards print small beside it: blocks of four or five digits that stand in a row without a card number,
/// in row order, from left to right.
std::vector<std::string> extractBINHints(std::span<const Observations> rows);

/// The hints that can be the beginning of a card number, each once. A lone group may as well be a hotline ("95588") or
/// a year, so a hint counts only with an allowed first digit and when it is no hotline of a bank; and a card prints one
/// or two, so that a page of numbers gives no more than the first few.
std::vector<std::string> plausibleBINHints(std::span<const std::string> hints);

/// Where a fragment of a card number begins in the number when its leading digits repeat the end of the hint: 0 for
/// a fragment that begins with the whole hint. Of several overlaps the longest counts; absent when fewer than
/// `minimumOverlap` digits overlap.
std::optional<std::size_t> binSuffixOffset(std::string_view fragment, std::string_view hint,
                                           std::size_t minimumOverlap = 1);

}  // namespace pravik
