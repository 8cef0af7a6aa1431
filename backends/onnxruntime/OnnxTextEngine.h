#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"

namespace pravik {

/// How an OnnxTextEngine is set up.
struct OnnxTextEngineOptions {
  /// The folder that holds the model files (see ModelFiles.h for their names).
  std::string modelDirectory;
  /// Threads that one model run may use; 0 means one for every core.
  int threadCount = 0;
};

/// Reads Chinese and Latin text with the PP-OCR models on ONNX Runtime: finds lines of text, cuts them out of the
/// full-resolution picture, turns those that stand on their head, reads them in batches, and reads numbers a second
/// time. One instance may be shared by threads.
///
/// Languages: simplified Chinese ("zh-Hans" and the tags that mean the same) and English ("en" in any region). An empty
/// list means what the models read anyway; the order has no effect, since one model reads both.
/// `usesLanguageCorrection` has no effect: the model has no language model to correct with.
class OnnxTextEngine : public TextEngine {
 public:
  /// Costs nothing: the models are loaded by the first call of `recognize` or by `load`.
  explicit OnnxTextEngine(OnnxTextEngineOptions options);
  ~OnnxTextEngine() override;

  /// Loads the models now, unless they are loaded. Throws std::runtime_error that names the file when one is missing,
  /// cannot be read or does not fit the others; the next call tries again.
  void load() const;

  /// Throws as `load` does, std::invalid_argument that names a language the models lack, and std::bad_alloc.
  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const override;

  bool readsDigits() const override { return true; }
  /// `quick` is the small network for digit rows, `thorough` the recognition model. Throws as `load` does, and
  /// std::bad_alloc.
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader reader,
                                     const WorkLimit& limit) const override;

 private:
  class Models;
  std::shared_ptr<const Models> models() const;
  static std::vector<RecognizedText> textsOn(const Bitmap& bitmap, const TextRequest& request, const Models& models);

  OnnxTextEngineOptions options_;
  mutable std::mutex loading_;
  mutable std::shared_ptr<const Models> models_;
};

}  // namespace pravik
