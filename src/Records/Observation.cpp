#include "Records/Observation.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pravik {
namespace {

/// Ascending order in which a NaN, which a foreign engine may deliver, comes last: a strict weak order for any input.
bool comesBefore(double a, double b) {
  return a < b || (std::isnan(b) && !std::isnan(a));
}

void sortLeftToRight(Observations& line) {
  std::ranges::stable_sort(line, comesBefore, [](const Observation& block) { return block.boundingBox.midX(); });
}

}  // namespace

double topOriginMidY(const Observation& observation) {
  return 1 - observation.boundingBox.midY();
}

std::vector<Observations> groupedByLine(const Observations& observations, double threshold) {
  Observations sorted = observations;
  std::ranges::stable_sort(sorted, comesBefore, topOriginMidY);

  std::vector<Observations> lines;
  double sum = 0;
  double reference = -1;
  for (Observation& observation : sorted) {
    const double centre = topOriginMidY(observation);
    const bool startsNewLine = lines.empty() || (reference >= 0 && std::abs(centre - reference) >= threshold);
    if (startsNewLine) {
      lines.emplace_back();
      sum = 0;
    }
    lines.back().push_back(std::move(observation));
    sum += centre;
    reference = startsNewLine ? centre : sum / static_cast<double>(lines.back().size());
  }
  for (Observations& line : lines) sortLeftToRight(line);
  return lines;
}

std::string lineText(const Observations& line) {
  std::string text;
  for (const Observation& block : line) {
    if (&block != &line.front()) text += ' ';
    text += block.text;
  }
  return text;
}

std::string joinedText(const Observations& observations, double lineThreshold) {
  std::string text;
  bool isFirst = true;
  for (const Observations& line : groupedByLine(observations, lineThreshold)) {
    if (!isFirst) text += '\n';
    isFirst = false;
    text += lineText(line);
  }
  return text;
}

}  // namespace pravik
