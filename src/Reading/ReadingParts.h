#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Core/ImagePreprocessor.h"
#include "Core/TextRecognizer.h"
#include "Platform/BarcodeDetector.h"
#include "Platform/PhotoLibrary.h"
#include "Platform/Projection.h"
#include "Platform/WorkLimit.h"
#include "Reading/CrossAttemptAccumulator.h"
#include "Reading/Reading.h"

namespace pravik {

/// Where the picture that is being read comes from.
struct PictureOrigin {
  /// The upright picture that was handed in; absent before a reading has begun.
  std::optional<Bitmap> picture;
  /// How the pixels of what is being read lie on it.
  Projection projection = {};
  /// The card on it, in pixels from the top left; absent when no outline was found.
  std::optional<Quadrilateral> outline = {};
};

/// What a reading needs. A call takes a copy with it, so that it outlives the SDK that began it.
struct ReadingParts {
  TextRecognizer recognizer;
  ImagePreprocessor preprocessor;
  std::shared_ptr<const BarcodeDetector> barcodeDetector;
  /// Takes the pictures of every stage for a person to look at; absent when none are wanted.
  std::shared_ptr<PhotoLibrary> debugPictures;
  /// Takes what bank cards gave that had no number.
  std::shared_ptr<CrossAttemptAccumulator> accumulator;
  WorkLimit limit;
  /// By how many degrees clockwise the picture was turned so that its text is upright; 0 when it was not.
  int turned = 0;
  PictureOrigin origin = {};
  /// The day by which cards have expired or not.
  std::chrono::year_month_day date = {};

  /// Takes the corners of all text that is seen on `origin.picture`; absent when nobody asks.
  std::shared_ptr<std::vector<Quadrilateral>> seenTexts = nullptr;

  /// The same for a part of the picture, whose corners (in pixels from the top left) become those of a new one.
  ReadingParts onPart(const Quadrilateral& corners, const Size& size) const;
  /// The blocks of text on a picture. Throws cancelled when the reading was called off, else what the engine throws.
  Observations recognize(const Bitmap& bitmap, TextRecognizer::Options options) const;
  /// Saves a picture of a stage, upright, under a label when such are wanted; a failure is logged.
  void debugSaveImage(const Image& image, std::string_view label) const;
  /// Whether there is time for another stage. Throws cancelled when the reading was called off.
  bool goesOn() const;
};

/// A card that was found on a picture.
struct CardOnPicture {
  /// Cut out and straightened if need be, else the picture.
  Image image;
  /// Where the card lies on that, in pixels from the top left; absent when it fills it, or was not found.
  std::optional<Quadrilateral> outline;
  /// What the card is read with.
  ReadingParts parts;

  /// Upright, in pixels.
  Size size() const { return uprightSize(image); }
};

/// Looks for a card. Pictures of the stages are saved under labels that begin with the name.
CardOnPicture cardOn(const ReadingParts& parts, const Image& image, std::string_view name);

/// Whether an image has pixels, and not too many.
bool isUsable(const Image& image);

/// A reading that ended with an error.
Reading failed(const OCRError& error, UnreadReason reason);
/// Why a picture gave no record, as far as the picture tells.
UnreadReason reasonOfMissingRecord(const ReadingParts& parts, const Image& image, bool hasText);
/// A reading that found no record, with what is wrong with the picture.
Reading withoutRecord(const ReadingParts& parts, const Image& image, bool hasText);

}  // namespace pravik
