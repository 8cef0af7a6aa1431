#include "backends/onnxruntime/KeyList.h"

#include <algorithm>
#include <sstream>

namespace pravik::ppocr {

KeyList::KeyList(const std::string& lines) : texts_{""} {
  std::istringstream text(lines);
  for (std::string line; std::getline(text, line);) texts_.push_back(line);
  texts_.emplace_back(" ");
}

std::vector<int> KeyList::labelsOf(std::span<const std::string_view> texts) const {
  std::vector<int> labels;
  for (const std::string_view text : texts) {
    const auto found = std::ranges::find(texts_, text);
    if (found != texts_.end()) labels.push_back(static_cast<int>(found - texts_.begin()));
  }
  return labels;
}

}  // namespace pravik::ppocr
