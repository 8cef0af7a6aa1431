#include "Core/TextRecognizer.h"

#include <utility>

#include "Async/RunOnPool.h"

namespace pravik {
namespace {

Observations observationsFrom(std::vector<RecognizedText> blocks) {
  Observations observations;
  observations.reserve(blocks.size());
  for (RecognizedText& block : blocks) {
    if (!block.topCandidate) continue;
    observations.push_back(
        {std::move(block.topCandidate->text), block.topCandidate->confidence, block.boundingBox, block.direction});
  }
  return observations;
}

}  // namespace

// The presets differ in language priority, correction and text height on purpose: a bank card's number row is
// Latin and small, an identity card's fields are Chinese words that a language model would "correct".
const TextRecognizer::Options TextRecognizer::Options::idCard{
    {RecognitionLevel::accurate, {"zh-Hans", "en-US"}, false, 0.018F}};
const TextRecognizer::Options TextRecognizer::Options::bankCard{
    {RecognitionLevel::accurate, {"en-US", "zh-Hans"}, true, 0.015F}};

TextRecognizer::TextRecognizer(std::shared_ptr<const TextEngine> engine, std::shared_ptr<Dispatch> dispatch)
    : engine_(std::move(engine)), dispatch_(std::move(dispatch)) {}

Observations TextRecognizer::recognizeNow(const Bitmap& bitmap, const Options& options) const {
  if (!engine_) throw OCRError::recognitionFailed("没有可用的文字识别引擎");
  return observationsFrom(engine_->recognize(bitmap, options));
}

std::vector<SeenDigits> TextRecognizer::readDigits(const std::vector<Bitmap>& rows, DigitReader reader,
                                                   const WorkLimit& limit) const {
  return engine_ ? engine_->readDigits(rows, reader, limit) : std::vector<SeenDigits>{};
}

void TextRecognizer::recognize(const Bitmap& bitmap, const Options& options,
                               std::function<void(Result<Observations>)> completion) const {
  std::function<Result<Observations>()> work = [recognizer = *this, bitmap, options] {
    return recognizer.recognizeNow(bitmap, options);
  };
  const auto answer = std::make_shared<AnswerOnce<Observations>>(std::move(completion));
  runAndAnswer<Observations>(dispatch_, std::move(work),
                             [answer](Result<Observations> result) { answer->give(std::move(result)); });
}

Task<Observations> TextRecognizer::recognize(Bitmap bitmap, Options options) const {
  return suspendUntilCalled<Observations>(
      [recognizer = *this, bitmap = std::move(bitmap), options = std::move(options)](auto completion) {
        recognizer.recognize(bitmap, options, std::move(completion));
      });
}

}  // namespace pravik
