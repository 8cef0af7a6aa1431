#include "backends/onnxruntime/KeyList.h"

#include <sstream>

namespace pravik::ppocr {

KeyList::KeyList(const std::string& lines) : texts_{""} {
  std::istringstream text(lines);
  for (std::string line; std::getline(text, line);) texts_.push_back(line);
  texts_.emplace_back(" ");
}

}  // namespace pravik::ppocr
