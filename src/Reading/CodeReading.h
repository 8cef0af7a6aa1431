#pragma once

#include "Platform/Image.h"
#include "Reading/Reading.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// Reads a code, the first that the detector reports, of the types that the mode reads; none for the mode of a card.
/// Throws as read() does.
Reading readCode(const ReadingParts& parts, const Image& image, OCRScanMode mode);

}  // namespace pravik
