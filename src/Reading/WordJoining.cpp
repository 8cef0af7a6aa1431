#include "Reading/CorrectionRules.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

namespace pravik {
namespace {

/// Blocks are a little wider than their letters. A picture's shape is not known here, so that distances along a line
/// are measured in widths of a letter.
constexpr double maximumGap = 1.2;
constexpr double maximumOverlap = 0.7;
/// In heights of the blocks.
constexpr double maximumOffset = 0.3;
constexpr double maximumHeightRatio = 1.35;
/// No line of a card is longer.
constexpr std::size_t maximumLength = 64;
/// Words of a line are so many blocks apart in reading order at most: noise may stand between them.
constexpr std::size_t nearestBlocks = 8;

bool isWords(const std::string& text) {
  return !text.empty() && text.size() <= maximumLength &&
         std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

double letterWidth(const Observation& block) {
  return block.boundingBox.width / static_cast<double>(block.text.size());
}

/// Every comparison is false for the odd numbers that a foreign engine may deliver.
bool isNextWord(const Observation& left, const Observation& right) {
  if (!isWords(left.text) || !isWords(right.text)) return false;
  const auto [lower, higher] = std::minmax(left.boundingBox.height, right.boundingBox.height);
  const double offset = std::abs(left.boundingBox.midY() - right.boundingBox.midY());
  const double gap = right.boundingBox.x - left.boundingBox.maxX();
  const double letter = std::min(letterWidth(left), letterWidth(right));
  return higher <= maximumHeightRatio * lower && offset < maximumOffset * lower && gap > -maximumOverlap * letter &&
         gap < maximumGap * letter;
}

Rect around(const Rect& a, const Rect& b) {
  const double x = std::min(a.x, b.x);
  const double y = std::min(a.y, b.y);
  return {x, y, std::max(a.maxX(), b.maxX()) - x, std::max(a.maxY(), b.maxY()) - y};
}

/// The confidence of the whole is the mean over its characters.
Observation together(Observation left, const Observation& right) {
  const auto leftLength = static_cast<float>(left.text.size());
  const auto rightLength = static_cast<float>(right.text.size());
  left.confidence = (left.confidence * leftLength + right.confidence * rightLength) / (leftLength + rightLength);
  left.text += ' ';
  left.text += right.text;
  left.boundingBox = around(left.boundingBox, right.boundingBox);
  return left;
}

}  // namespace

Observations withWordsJoined(Observations observations) {
  Observations result;
  for (Observation& block : observations) {
    const auto isBeside = [&](const Observation& word) { return isNextWord(word, block) || isNextWord(block, word); };
    const std::size_t first = result.size() - std::min(result.size(), nearestBlocks);
    const auto word = std::find_if(result.begin() + static_cast<std::ptrdiff_t>(first), result.end(), isBeside);
    if (word == result.end())
      result.push_back(std::move(block));
    else
      *word = isNextWord(*word, block) ? together(std::move(*word), block) : together(std::move(block), *word);
  }
  return result;
}

}  // namespace pravik
