#pragma once

#include <string>
#include <vector>

#include "Records/Observation.h"

namespace pravik {

/// The text of a card in reading order, in the three views that the parsers work on.
struct CardText {
  /// Lines from top to bottom, blocks in a line from left to right.
  std::vector<Observations> lines;
  /// Each line's blocks joined with one space.
  std::vector<std::string> lineTexts;
  /// The line texts joined with line feeds.
  std::string fullText;
};

CardText cardText(const Observations& observations);

/// The rows of a bank card, coarser than lines: the groups of an embossed number do not stand as level as print.
std::vector<Observations> bankCardRows(const Observations& observations);

}  // namespace pravik
