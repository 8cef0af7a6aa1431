#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "Platform/WorkLimit.h"

namespace pravik {

/// How much work the engine may spend.
enum class RecognitionLevel : std::uint8_t { accurate, fast };

/// What a caller asks of a text engine.
struct TextRequest {
  RecognitionLevel recognitionLevel = RecognitionLevel::accurate;
  /// Language tags ("zh-Hans", "en-US") in order of priority.
  std::vector<std::string> recognitionLanguages;
  /// Whether the engine may correct words with a language model.
  bool usesLanguageCorrection = false;
  /// Smallest text height to read, as a fraction of the picture's height.
  float minimumTextHeight = 0;
  /// When it is spent, what was read so far is the answer.
  WorkLimit limit = {};

  bool operator==(const TextRequest&) const = default;
};

/// One reading of a block of text; confidence from 0 to 1.
struct TextCandidate {
  std::string text;
  float confidence = 0;
  bool operator==(const TextCandidate&) const = default;
};

/// One block of text on a picture.
struct RecognizedText {
  /// The best reading; absent when the block could not be read at all.
  std::optional<TextCandidate> topCandidate;
  /// Normalised to 0...1 in both directions, origin at the lower left of the picture.
  Rect boundingBox;
};

/// Reads text. A call blocks; calls from several threads may overlap.
class TextEngine {
 public:
  virtual ~TextEngine() = default;

  /// The blocks of text in reading order. No text is an empty list. Throws std::exception with a text that a
  /// user can read when the engine cannot work (a missing model, a language that it lacks).
  virtual std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const = 0;
};

}  // namespace pravik
