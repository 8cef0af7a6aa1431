#pragma once

#include <optional>

#include "Platform/Image.h"
#include "Reading/Reading.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// Reads a bank card in up to four stages, each only when those before gave no number and there is time left. Throws
/// as read() does.
Reading readBankCard(const ReadingParts& parts, const Image& image);

/// The vertical centre of the row with the most digits, as a fraction of the height from the top: that of the row's
/// first block. Absent when no row has six digits.
std::optional<double> detectCardNumberRowY(const Observations& observations);

}  // namespace pravik
