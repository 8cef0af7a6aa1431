#include "Parsers/CardText.h"

#include <algorithm>
#include <iterator>

#include "Utils/Text.h"

namespace pravik {

namespace {

/// Blocks whose vertical centres are closer than this fraction of the picture's height share a line.
constexpr double lineThreshold = 0.025;
constexpr double bankCardRowThreshold = 0.04;

}  // namespace

CardText cardText(const Observations& observations) {
  CardText text;
  text.lines = groupedByLine(observations, lineThreshold);
  std::ranges::transform(text.lines, std::back_inserter(text.lineTexts), lineText);
  text.fullText = joined(text.lineTexts, "\n");
  return text;
}

std::vector<Observations> bankCardRows(const Observations& observations) {
  return groupedByLine(observations, bankCardRowThreshold);
}

}  // namespace pravik
