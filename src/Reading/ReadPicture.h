#pragma once

#include <string>

#include "Platform/Image.h"
#include "Reading/CardReading.h"
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

/// The record of one side of an identity card that fills the picture, of the blocks of text on it.
Reading identityCardIn(const ReadingParts& parts, const Image& card, const Observations& observations,
                       OCRScanMode side);

/// Reads a code, the first that the detector reports, of the types that the mode reads; none for the mode of a card.
Reading readCode(const ReadingParts& parts, const Image& image, OCRScanMode mode);

/// Finds the cards on a picture and reads each as what its text says it is, from top to bottom and from left to right.
/// When the time is spent, the cards that were found until then are given with that as their reason. Throws
/// invalidImage for a picture without pixels or with too many, cancelled, and what the engine throws.
CardsReading readCards(const ReadingParts& parts, const Image& image);

/// All text on a picture: blocks of a line joined with a space, lines with a line feed. The scene decides how the
/// picture is prepared. Throws invalidImage, or what the engine throws.
std::string readText(const ReadingParts& parts, const Image& image, SceneType scene);

}  // namespace pravik
