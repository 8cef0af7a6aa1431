#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/TextEngine.h"

namespace pravik {

/// What several looks at one row of digits say together. The looks show the same part of the picture, so that a digit
/// has the same position in each.
struct VotedDigits {
  std::string digits;
  /// Of each digit the share of the looks that read it so, 0 to 1.
  std::vector<double> agreement;
  /// Where each digit stands, 0 at the left end of the row, 1 at the right.
  std::vector<double> positions;
  /// The number passes as a card number, and the looks agree well enough to trust it.
  bool isSound = false;

  /// The least agreement of a digit; 0 without digits.
  double confidence() const;
};

/// Aligns the looks with the one that is nearest to all others (Fiscus, "A post-processing system to yield reduced
/// word error rates", 1997), and takes at every place the digit of the greatest summed probability. A place that at
/// most half of the looks see is left out. Where that gives no card number, and exactly one digit that the looks
/// dispute makes it one, that digit is taken.
VotedDigits vote(std::span<const SeenDigits> looks);

/// How far the looks bear a number out that was read otherwise: the least share of them that read a digit of it so,
/// or that see at most one digit more than it has; 0 to 1. Each look is aligned with the number by the fewest changes
/// (Levenshtein).
double supportFor(std::string_view number, std::span<const SeenDigits> looks);

/// The digits of a look, each the likeliest.
std::string digitsOf(const SeenDigits& look);

/// Whether nearly all cards have so many digits. With another count a digit was more likely lost or made up.
bool isCommonLength(std::size_t digits);

/// Whether a number has the length, the beginning and the check digit of a bank card.
bool passesAsCardNumber(std::string_view digits);

}  // namespace pravik
