#include "Parsers/CardText.h"

#include <algorithm>
#include <iterator>

#include "Utils/Text.h"

namespace pravik {

CardText cardText(const Observations& observations) {
  CardText text;
  text.lines = groupedByLine(observations, textLineThreshold);
  std::ranges::transform(text.lines, std::back_inserter(text.lineTexts), lineText);
  text.fullText = joined(text.lineTexts, "\n");
  return text;
}

std::vector<Observations> bankCardRows(const Observations& observations) {
  return groupedByLine(observations, bankCardRowThreshold);
}

}  // namespace pravik
