#pragma once

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// Undoes in the blocks of a card what a photograph and an engine do to print, before the parsers see them. A pure
/// function, which any engine profits from.
Observations postCorrected(Observations observations, SceneType scene);

/// The record with the fields empty that are a label of the document: no card has such a value.
Record withoutLabels(Record record);

}  // namespace pravik
