#pragma once

#include <optional>
#include <vector>

#include "Core/Strip.h"
#include "Platform/Bitmap.h"
#include "Platform/TextEngine.h"
#include "Reading/DigitVote.h"
#include "Reading/ReadingParts.h"
#include "Records/Observation.h"

namespace pravik {

/// The row of a bank card's number, read by itself.
struct NumberRow {
  /// In pixels of the picture that it was read on.
  Strip strip;
  VotedDigits voted;
  /// What each look at the row saw; the positions are those along the strip.
  std::vector<SeenDigits> looks;
};

/// Looks for the row of the number on a card, reads it in several looks until they agree, and gives it whether they do
/// or not (`voted.isSound`). `outline` is that of the card on the picture, in pixels from the top left; absent for a
/// card that fills it. `pieces` are the blocks of text found on the same picture: they tell where to look first. Absent
/// when no row of digits is seen, and with an engine that does not read digits alone.
std::optional<NumberRow> readNumberRow(const ReadingParts& parts, const Bitmap& picture,
                                       const std::optional<Quadrilateral>& outline, const Observations& pieces);

/// The blocks with the row as one of them, in place of the pieces that it covers.
Observations withNumberRow(const Observations& observations, const NumberRow& row, const Size& picture);

}  // namespace pravik
