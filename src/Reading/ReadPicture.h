#pragma once

#include <string>

#include "Platform/Image.h"
#include "Reading/Reading.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// Reads a picture as what the mode says, on the calling thread. Every failure is an error of the reading, but for a
/// lack of memory, which is thrown.
Reading readPicture(const ReadingParts& parts, const Image& image, OCRScanMode mode);

// One file each. They throw as PravikSDK::read() does, and OCRError for what is wrong with the picture.

/// Reads one side of an identity card: straightens the card, prepares the picture, recognises its text, checks that it
/// is that of the side, and parses it.
Reading readIdentityCard(const ReadingParts& parts, const Image& image, OCRScanMode side);

/// Reads a code, the first that the detector reports, of the types that the mode reads; none for the mode of a card.
Reading readCode(const ReadingParts& parts, const Image& image, OCRScanMode mode);

/// All text on a picture: blocks of a line joined with a space, lines with a line feed. The scene decides how the
/// picture is prepared. Throws invalidImage, or what the engine throws.
std::string readText(const ReadingParts& parts, const Image& image, SceneType scene);

}  // namespace pravik
