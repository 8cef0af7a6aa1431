#pragma once

#include <optional>

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// Checks that a recognised text belongs to the expected kind of document. Lenient: a text with features of both
/// kinds, or of none, passes. Throws OCRError::sceneMismatch.
void validateScene(const Observations& observations, SceneType expected);

/// How many cards a text has the features of, by what each card has once.
int documentsIn(const Observations& observations);
/// The kind of card that the text stands on; absent when it has the features of none. Of an identity card's two sides
/// the text decides for the portrait side, and for either against a bank card.
std::optional<OCRScanMode> documentIn(const Observations& observations);
/// Whether a block is that of a card's number, whole or nearly so.
bool hasCardNumber(const Observations& observations);

}  // namespace pravik
