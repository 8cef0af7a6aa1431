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

}  // namespace pravik::ppocr
