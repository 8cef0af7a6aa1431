#pragma once

#include <string>
#include <vector>

#include "Core/TextRecognizer.h"

namespace pravik::test {

/// A block whose vertical centre lies `top` below the top edge (fraction of the height).
inline TextRecognizer::Observation block(std::string text, double left, double top) {
  constexpr double height = 0.02;
  return {std::move(text), 0.9F, {left, 1 - top - height / 2, 0.1, height}};
}

/// One block for each text, evenly spread from the top to the bottom, each a line of its own.
inline Observations page(const std::vector<std::string>& texts) {
  Observations blocks;
  for (const std::string& text : texts) {
    const double top = (static_cast<double>(blocks.size()) + 0.5) / static_cast<double>(texts.size());
    blocks.push_back(block(text, 0.1, top));
  }
  return blocks;
}

/// Texts that a broken or hostile engine might deliver.
inline std::vector<std::string> hostileTexts() {
  const auto repeated = [](const std::string& part) {
    std::string text;
    while (text.size() < 1'000'000) text += part;
    return text;
  };
  return {"",
          repeated(" "),
          repeated("1"),
          repeated("1 "),
          repeated("20150301 "),
          repeated("２０１５.０３."),
          repeated("1990年 "),
          repeated("姓，"),
          repeated("签发机关：有效期"),
          repeated("住址\n"),
          repeated("\u0301"),
          repeated("𠀀"),
          repeated("\xff"),
          repeated(std::string("\0", 1)),
          "姓名\xe5\xbc"};
}

}  // namespace pravik::test
