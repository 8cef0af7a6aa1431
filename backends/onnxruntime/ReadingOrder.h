#pragma once

#include <vector>

#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// Sorts boxes as a person reads them: rows from top to bottom, in a row from left to right. A box belongs to a row
/// when its centre is closer to the row's than half of the lower height of the two.
void sortInReadingOrder(std::vector<TextBox>& boxes);

}  // namespace pravik::ppocr
