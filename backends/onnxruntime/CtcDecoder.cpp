#include "backends/onnxruntime/CtcDecoder.h"

#include <algorithm>
#include <cstddef>

namespace pravik::ppocr {

std::vector<CtcCharacter> decodeCtc(std::span<const float> probabilities, int classCount) {
  constexpr int blank = 0;
  std::vector<CtcCharacter> characters;
  int previous = blank;
  const auto width = static_cast<std::size_t>(classCount);
  for (std::size_t step = 0; (step + 1) * width <= probabilities.size(); ++step) {
    const auto classes = probabilities.subspan(step * width, width);
    const auto best = std::ranges::max_element(classes);
    const int label = static_cast<int>(best - classes.begin());
    if (label != blank && label != previous)
      characters.push_back({label, *best, static_cast<int>(step)});
    else if (label != blank && *best > characters.back().probability)
      characters.back() = {label, *best, static_cast<int>(step)};
    previous = label;
  }
  return characters;
}

SeenDigits decodeDigits(std::span<const float> probabilities, int classCount, const DigitClasses& digits,
                        double usedSteps) {
  const auto width = static_cast<std::size_t>(classCount);
  SeenDigits seen;
  std::size_t previous = digits.size();
  float surest = 0;
  for (std::size_t step = 0; (step + 1) * width <= probabilities.size(); ++step) {
    const auto classes = probabilities.subspan(step * width, width);
    const double position = (static_cast<double>(step) + 0.5) / usedSteps;
    if (position > 1) break;
    SeenDigit here{.position = position, .probabilities = {}};
    float sum = classes.front();
    for (std::size_t digit = 0; digit < digits.size(); ++digit) {
      for (const int label : digits[digit]) here.probabilities[digit] += classes[static_cast<std::size_t>(label)];
      sum += here.probabilities[digit];
    }
    const auto best = std::ranges::max_element(here.probabilities);
    const bool isBlank = classes.front() >= *best;
    const auto label = isBlank ? digits.size() : static_cast<std::size_t>(best - here.probabilities.begin());
    const bool isNew = label != previous;
    previous = label;
    if (isBlank || (!isNew && *best / sum <= surest)) continue;
    surest = *best / sum;
    for (float& probability : here.probabilities) probability /= sum;
    if (isNew)
      seen.push_back(here);
    else
      seen.back() = here;
  }
  return seen;
}

}  // namespace pravik::ppocr
