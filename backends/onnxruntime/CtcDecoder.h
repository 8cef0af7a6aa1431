#pragma once

#include <array>
#include <span>
#include <vector>

#include "Platform/TextEngine.h"

namespace pravik::ppocr {

/// A character that the recognition model saw.
struct CtcCharacter {
  /// Number of the output class, never the blank.
  int label = 0;
  /// How sure the model is, 0 to 1.
  float probability = 0;
  /// The column of the output at which it was surest.
  int step = 0;

  bool operator==(const CtcCharacter&) const = default;
};

/// Greedy decoding of connectionist temporal classification (Graves et al., ICML 2006): the likeliest class of every
/// step, runs of one class taken once, blanks (class 0) left out. `probabilities` holds `classCount` numbers a step.
std::vector<CtcCharacter> decodeCtc(std::span<const float> probabilities, int classCount);

/// The classes that stand for each of the digits 0 to 9.
using DigitClasses = std::array<std::vector<int>, 10>;

/// The same for a row of digits: at every step only the blank and the digits compete, each digit with the sum of its
/// classes. `usedSteps` of the steps cover the row, the others what it was padded with.
SeenDigits decodeDigits(std::span<const float> probabilities, int classCount, const DigitClasses& digits,
                        double usedSteps);

}  // namespace pravik::ppocr
