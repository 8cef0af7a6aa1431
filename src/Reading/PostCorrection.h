#pragma once

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// Undoes in the blocks of a card what a photograph and an engine do to print, before the parsers see them. A pure
/// function, which any engine profits from.
Observations postCorrected(Observations observations, SceneType scene);

/// Empties the fields of a record that no card can have, those that are a label of the document, and mends a bank
/// card's holder whose name cannot be spelt so.
Record withoutImpossibleFields(Record record);

}  // namespace pravik
