#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Geometry.h"

namespace pravik {

/// One recognised block of text.
struct Observation {
  /// The best reading, exactly as the engine gave it.
  std::string text;
  /// The engine's confidence in it, 0 to 1.
  float confidence = 0;
  /// Normalised to 0...1 in both directions, origin at the lower left of the picture.
  Rect boundingBox;
  /// The direction in which the text runs, in degrees clockwise from upright text; absent when the engine does not
  /// tell.
  std::optional<double> direction = {};

  bool operator==(const Observation&) const = default;
};

using Observations = std::vector<Observation>;

/// The vertical distance of two centres from which on blocks stand on different lines, as a fraction of the picture's
/// height: that of the parsers, of raw text and of the log.
inline constexpr double textLineThreshold = 0.025;
/// That of a bank card's rows, which is coarser: the groups of an embossed number do not stand as level as print.
inline constexpr double bankCardRowThreshold = 0.04;

/// The block's vertical centre measured from the top: 0 at the top edge of the picture, 1 at the bottom.
double topOriginMidY(const Observation& observation);

/// The blocks in visual lines: lines from top to bottom, blocks in a line from left to right. A block joins the
/// current line when its vertical centre is closer than `threshold` (fraction of the picture's height) to the mean
/// of the line's centres.
std::vector<Observations> groupedByLine(const Observations& observations, double threshold);

/// The lines' texts: blocks joined with one space, lines with one line feed.
std::string joinedText(const Observations& observations, double lineThreshold);

/// The texts of one line's blocks joined with one space.
std::string lineText(const Observations& line);

}  // namespace pravik
