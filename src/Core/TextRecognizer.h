#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "OCRError.h"
#include "Platform/Dispatch.h"
#include "Platform/Geometry.h"
#include "Platform/TextEngine.h"
#include "Task.h"

namespace pravik {

/// Turns a picture into blocks of text with the platform's text engine. Holds no state between calls; one
/// instance may be shared by threads.
class TextRecognizer {
 public:
  /// One recognised block of text.
  struct Observation {
    /// The best reading, exactly as the engine gave it.
    std::string text;
    /// The engine's confidence in it, 0 to 1.
    float confidence = 0;
    /// Normalised to 0...1 in both directions, origin at the lower left of the picture.
    Rect boundingBox;

    bool operator==(const Observation&) const = default;
  };

  /// The settings handed to the engine.
  struct Options : TextRequest {
    /// For identity cards: Chinese first, no language correction.
    static const Options idCard;
    /// For bank cards: English first, with language correction, and smaller text.
    static const Options bankCard;
  };

  /// Without an engine every recognition fails with OCRError::recognitionFailed; without a dispatch the work is
  /// done on the calling thread.
  TextRecognizer(std::shared_ptr<const TextEngine> engine, std::shared_ptr<Dispatch> dispatch);

  /// Recognises on the concurrent pool and calls `completion` there exactly once. An engine's failure arrives as
  /// OCRError::recognitionFailed with the engine's text; no text is an empty list.
  void recognize(const Bitmap& bitmap, const Options& options,
                 std::function<void(Result<std::vector<Observation>>)> completion) const;
  /// The same as a suspending call; throws the OCRError.
  Task<std::vector<Observation>> recognize(Bitmap bitmap, Options options) const;

 private:
  std::shared_ptr<const TextEngine> engine_;
  std::shared_ptr<Dispatch> dispatch_;
};

using Observations = std::vector<TextRecognizer::Observation>;

/// The block's vertical centre measured from the top: 0 at the top edge of the picture, 1 at the bottom.
double topOriginMidY(const TextRecognizer::Observation& observation);

/// The blocks in visual lines: lines from top to bottom, blocks in a line from left to right. A block joins the
/// current line when its vertical centre is closer than `threshold` (fraction of the picture's height) to the mean
/// of the line's centres.
std::vector<Observations> groupedByLine(const Observations& observations, double threshold);

/// The lines' texts: blocks joined with one space, lines with one line feed.
std::string joinedText(const Observations& observations, double lineThreshold);

/// The texts of one line's blocks joined with one space.
std::string lineText(const Observations& line);

}  // namespace pravik
