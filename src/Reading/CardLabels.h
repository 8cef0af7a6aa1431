#pragma once

#include <span>
#include <string_view>

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// What is printed on every document of a scene beside or above its values; none on a bank card.
std::span<const std::string_view> labelsOf(SceneType scene);

/// Makes the blocks that are a label of the scene but for one character, alone or with the value behind it, that
/// label. Only a label that is on no block as it should be is looked for. One of two characters is told from a value
/// by the character it was misread as, which looks alike, or by its first character, with which no name begins.
void repairLabels(Observations& observations, SceneType scene);

}  // namespace pravik
