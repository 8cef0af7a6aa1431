#pragma once

#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// The blocks with every value that goes on in the next line, an issuing office or an address, as one block on the
/// line of its label: behind the label when it stood in one block with it, else in the place of the value's first
/// block. The label may stand beside the value's first line, between two lines or above them.
Observations withContinuedValues(Observations observations, SceneType scene);

}  // namespace pravik
