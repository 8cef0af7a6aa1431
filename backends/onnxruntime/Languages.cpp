#include "backends/onnxruntime/Languages.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace pravik::ppocr {
namespace {

/// Simplified Chinese and what ASCII can write. The model knows traditional characters too, but readings are given in
/// simplified ones, so that traditional Chinese is no language of this engine.
constexpr std::array<std::string_view, 5> languages{"zh-hans", "zh-cn", "zh-sg", "zh", "en"};

std::string lowered(std::string tag) {
  std::ranges::transform(tag, tag.begin(), [](char c) {
    if (c == '_') return '-';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return tag;
}

/// Whether the tag is the language or one of its regions: "en" has "en-us"; "zh" alone is written as people write it
/// by default, and its other scripts and regions are languages of their own.
bool isRead(const std::string& tag) {
  return std::ranges::any_of(languages, [&](std::string_view language) {
    return tag == language || (language != "zh" && tag.starts_with(std::string(language) + "-"));
  });
}

}  // namespace

void requireLanguages(const std::vector<std::string>& tags) {
  const auto missing = std::ranges::find_if(tags, [](const std::string& tag) { return !isRead(lowered(tag)); });
  if (missing != tags.end())
    throw std::invalid_argument("the text models do not read the language \"" + *missing +
                                "\"; they read zh-Hans and en");
}

}  // namespace pravik::ppocr
