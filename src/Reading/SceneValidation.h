#pragma once

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// Checks that a recognised text belongs to the expected kind of document. Lenient: a text with features of both
/// kinds, or of none, passes. Throws OCRError::sceneMismatch.
void validateScene(const Observations& observations, SceneType expected);

}  // namespace pravik
