#pragma once

#include <array>
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
  /// The direction in which the text runs, in degrees clockwise: 0 for text that stands upright, 90 for text that runs
  /// from the top to the bottom, 180 for text on its head. Absent when the engine does not tell; a picture is then
  /// read as it lies.
  std::optional<double> direction = {};
};

/// A digit seen on a picture of a row of digits.
struct SeenDigit {
  /// Where its middle lies along the row: 0 at the left edge of the picture, 1 at the right.
  double position = 0;
  /// How likely it is each of 0 to 9; what is missing to 1 is how likely nothing stands there.
  std::array<float, 10> probabilities{};

  bool operator==(const SeenDigit&) const = default;
};

/// The digits of a row from left to right; empty when none was seen.
using SeenDigits = std::vector<SeenDigit>;

/// How an engine reads digits: `quick` to search with and for a second opinion, `thorough` as well as it can.
enum class DigitReader : std::uint8_t { quick, thorough };

/// Reads text. A call blocks; calls from several threads may overlap.
class TextEngine {
 public:
  virtual ~TextEngine() = default;

  /// The blocks of text in reading order. No text is an empty list. Throws std::exception with a text that a
  /// user can read when the engine cannot work (a missing model, a language that it lacks).
  virtual std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const = 0;

  /// Whether the engine can read digits alone. Not unless it says so.
  virtual bool readsDigits() const { return false; }

  /// The digits on pictures that show one row each, as if nothing but digits could stand there. One answer a picture,
  /// in their order; when the limit is spent, what is left has none. An engine that cannot read digits alone gives an
  /// empty list. Throws as `recognize` does.
  virtual std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& /*rows*/, DigitReader /*reader*/,
                                             const WorkLimit& /*limit*/) const {
    return {};
  }
};

}  // namespace pravik
