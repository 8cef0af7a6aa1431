#include "backends/onnxruntime/KeyList.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace pravik::ppocr {

KeyList::KeyList(const std::vector<std::string>& characters) {
  texts_.reserve(characters.size() + 2);
  texts_.emplace_back();
  texts_.insert(texts_.end(), characters.begin(), characters.end());
  texts_.emplace_back(" ");
}

KeyList KeyList::load(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) throw std::runtime_error("the key list " + path + " is missing");
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> characters;
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    characters.push_back(line);
  }
  if (characters.empty()) throw std::runtime_error("the key list " + path + " cannot be read");
  return KeyList(characters);
}

}  // namespace pravik::ppocr
