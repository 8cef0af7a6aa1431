#pragma once

#include "Records/Observation.h"

namespace pravik {

/// The blocks with words or groups of digits that were found apart put together, with a space between: those without
/// Chinese characters that are as high, stand beside each other on one line and no further apart than words do.
/// Embossed letters stand so wide that an engine takes every word for a block of its own.
Observations withWordsJoined(Observations observations);

}  // namespace pravik
