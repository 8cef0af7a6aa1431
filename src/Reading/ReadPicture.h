#pragma once

#include "Platform/Image.h"
#include "Reading/Reading.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// Reads a picture as what the mode says, on the calling thread. Every failure is an error of the reading, but for a
/// lack of memory, which is thrown.
Reading readPicture(const ReadingParts& parts, const Image& image, OCRScanMode mode);

}  // namespace pravik
