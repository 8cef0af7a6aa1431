#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Records/Observation.h"

namespace pravik {

/// The length of a number that is put together from fragments: the most frequent one.
inline constexpr std::size_t fusedCardNumberLength = 16;

/// The runs of four to nineteen digits that may be pieces of a card number: the groups of each row and the whole
/// row, as read and with letters corrected. Each once a reading, so that a reading has one vote for it.
std::vector<std::string> extractCardNumberFragments(const Observations& observations);

/// Puts a card number together from the fragments of several readings of one card. A fragment is placed by being
/// complete, by its overlap with a hint, or by the only place where it overlaps what is already placed by four or
/// more digits without contradiction; then the fragments vote on each digit. A digit without a vote, or with a tie,
/// is resolved only when exactly one number comes out that is valid and passes the Luhn check.
///
/// Absent when no such number comes out, or when the digits are not all supported by a placed fragment or by that
/// check. `binHints` as extractBINHints() gives them.
std::optional<std::string> fuseCardNumber(std::span<const std::string> fragments, std::span<const std::string> binHints,
                                          std::size_t targetLength);

}  // namespace pravik
