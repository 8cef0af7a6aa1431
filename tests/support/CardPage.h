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
  using namespace std::string_view_literals;
  std::vector<std::string> texts{"", "姓名\xe5\xbc"};
  for (const std::string_view part : {" "sv, "1"sv, "1 "sv, "20150301 "sv, "２０１５.０３."sv, "1990年 "sv, "姓，"sv,
                                      "签发机关：有效期"sv, "住址\n"sv, "\u0301"sv, "𠀀"sv, "\xff"sv, "\0"sv}) {
    std::string& text = texts.emplace_back();
    while (text.size() < 200'000) text += part;
  }
  return texts;
}

}  // namespace pravik::test
