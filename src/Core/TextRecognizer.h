#pragma once

#include <functional>
#include <memory>

#include "Async/Task.h"
#include "Platform/Dispatch.h"
#include "Platform/TextEngine.h"
#include "Records/OCRError.h"
#include "Records/Observation.h"

namespace pravik {

/// Turns a picture into blocks of text with the platform's text engine. Holds no state between calls; one
/// instance may be shared by threads.
class TextRecognizer {
 public:
  using Observation = pravik::Observation;

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

  /// Recognises on the calling thread. Throws OCRError::recognitionFailed without an engine, else what the engine
  /// throws; no text is an empty list.
  Observations recognizeNow(const Bitmap& bitmap, const Options& options) const;
  /// Whether there is an engine that can.
  bool readsDigits() const { return engine_ && engine_->readsDigits(); }
  /// The digits on pictures of one row each; empty without an engine, and with one that does not read digits alone.
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader reader, const WorkLimit& limit) const;
  /// Recognises on the concurrent pool and calls `completion` there exactly once. An engine's failure arrives as
  /// OCRError::recognitionFailed with the engine's text; no text is an empty list.
  void recognize(const Bitmap& bitmap, const Options& options,
                 std::function<void(Result<Observations>)> completion) const;
  /// The same as a suspending call; throws the OCRError.
  Task<Observations> recognize(Bitmap bitmap, Options options) const;

 private:
  std::shared_ptr<const TextEngine> engine_;
  std::shared_ptr<Dispatch> dispatch_;
};

}  // namespace pravik
