#pragma once

#include "Records/Observation.h"

namespace pravik {

/// Makes a run of Chinese characters that is a bank's name but for one character that name: brush-like type is misread.
/// Only where no bank is named as it should be, and one known name alone comes into question. A short name is told by
/// what was read of it; where another bank may be called so, nothing is changed.
void repairBankName(Observations& observations);

}  // namespace pravik
