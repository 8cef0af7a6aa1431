#pragma once

#include "Platform/Image.h"
#include "Reading/Reading.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// Reads one side of an identity card: straightens the card, prepares the picture, recognises its text, checks that it
/// is that of the side, and parses it. Throws as read() does.
Reading readIdentityCard(const ReadingParts& parts, const Image& image, OCRScanMode side);

}  // namespace pravik
