#pragma once

#include <optional>
#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "Reading/Reading.h"

namespace pravik {

/// A card on an upright picture.
struct PicturedCard {
  const Bitmap& picture;
  /// Its corners in pixels from the top left; absent when no outline was found.
  std::optional<Quadrilateral> outline;
  /// The corners of its blocks of text, likewise.
  std::vector<Quadrilateral> texts;
};

/// What the picture does to a card.
struct PictureFindings {
  /// Of those that a picture can have, in the order of the enumeration.
  std::vector<ReadingWarning> warnings;
  /// Where light is reflected, in pixels of the picture from the top left.
  std::vector<Rect> glare;
  /// The picture's resolution on the card, whose width is 85.6 mm (ISO/IEC 7810, ID-1).
  double dotsPerMillimetre = 0;
};

/// Looks at the part of the picture that shows the card; at what surrounds its text, or at all of it, when there is no
/// outline. Never throws but for a lack of memory.
PictureFindings lookedAt(const PicturedCard& card);

}  // namespace pravik
