#pragma once

#include <optional>

#include "Core/ImagePreprocessor.h"
#include "Platform/Bitmap.h"
#include "Reading/Reading.h"

namespace pravik {

/// The parts of a picture that show a card, each straightened, upright and at the picture's own resolution. Absent is
/// what the card does not have, and what the report gives no place for.
struct CardCrops {
  std::optional<Bitmap> card;
  /// Of the portrait side of an identity card.
  std::optional<Bitmap> portrait;
  /// The row of the number: that of an identity card, or of a bank card.
  std::optional<Bitmap> number;
};

/// Cuts out what a reading found. `picture` is the upright picture that was read.
CardCrops cardCrops(const ImagePreprocessor& preprocessor, const Bitmap& picture, const Reading& reading);

}  // namespace pravik
