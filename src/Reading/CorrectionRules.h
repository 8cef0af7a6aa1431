#pragma once

#include <span>
#include <string_view>

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

// The rules of postCorrected() that have a file of their own.

namespace pravik {

/// What is printed on every document of a scene beside or above its values; none on a bank card.
std::span<const std::string_view> labelsOf(SceneType scene);

/// Makes the blocks that are a label of the scene but for one character, alone or with the value behind it, that
/// label. Only a label that is on no block as it should be is looked for. One of two characters is told from a value
/// by the character it was misread as, which looks alike, or by its first character, with which no name begins.
void repairLabels(Observations& observations, SceneType scene);

/// The blocks with words or groups of digits that were found apart put together, with a space between: those without
/// Chinese characters that are as high, stand beside each other on one line and no further apart than words do.
/// Embossed letters stand so wide that an engine takes every word for a block of its own.
Observations withWordsJoined(Observations observations);

/// The blocks with every value that goes on in the next line, an issuing office or an address, as one block on the
/// line of its label: behind the label when it stood in one block with it, else in the place of the value's first
/// block. The label may stand beside the value's first line, between two lines or above them.
Observations withContinuedValues(Observations observations, SceneType scene);

}  // namespace pravik
