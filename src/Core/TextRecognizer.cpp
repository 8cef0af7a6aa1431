#include "Core/TextRecognizer.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "Utils/Text.h"

namespace pravik {
namespace {

using Observation = TextRecognizer::Observation;

/// Ascending order in which a NaN, which a foreign engine may deliver, comes last: a strict weak order for any input.
bool comesBefore(double a, double b) {
  return a < b || (std::isnan(b) && !std::isnan(a));
}

void sortLeftToRight(Observations& line) {
  std::ranges::stable_sort(line, comesBefore, [](const Observation& block) { return block.boundingBox.midX(); });
}

Observations observationsFrom(std::vector<RecognizedText> blocks) {
  Observations observations;
  observations.reserve(blocks.size());
  for (RecognizedText& block : blocks) {
    if (!block.topCandidate) continue;
    observations.push_back({std::move(block.topCandidate->text), block.topCandidate->confidence, block.boundingBox});
  }
  return observations;
}

Result<Observations> recognizeNow(const TextEngine* engine, const Bitmap& bitmap, const TextRequest& request) {
  if (engine == nullptr) return tl::unexpected(OCRError::recognitionFailed("no text engine is available"));
  try {
    return observationsFrom(engine->recognize(bitmap, request));
  } catch (const std::exception& error) {
    return tl::unexpected(OCRError::recognitionFailed(error.what()));
  }
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

void TextRecognizer::recognize(const Bitmap& bitmap, const Options& options,
                               std::function<void(Result<Observations>)> completion) const {
  auto work = [engine = engine_, bitmap, options, completion = std::move(completion)] {
    completion(recognizeNow(engine.get(), bitmap, options));
  };
  if (!dispatch_) return work();
  dispatch_->asyncGlobal(std::move(work));
}

Task<Observations> TextRecognizer::recognize(Bitmap bitmap, Options options) const {
  return suspendUntilCalled<Observations>(
      [recognizer = *this, bitmap = std::move(bitmap), options = std::move(options)](auto completion) {
        recognizer.recognize(bitmap, options, std::move(completion));
      });
}

double topOriginMidY(const Observation& observation) {
  return 1 - observation.boundingBox.midY();
}

std::vector<Observations> groupedByLine(const Observations& observations, double threshold) {
  Observations sorted = observations;
  std::ranges::stable_sort(sorted, comesBefore, topOriginMidY);

  std::vector<Observations> lines;
  double sum = 0;
  double reference = -1;
  for (Observation& observation : sorted) {
    const double centre = topOriginMidY(observation);
    const bool startsNewLine = lines.empty() || (reference >= 0 && std::abs(centre - reference) >= threshold);
    if (startsNewLine) {
      lines.emplace_back();
      sum = 0;
    }
    lines.back().push_back(std::move(observation));
    sum += centre;
    reference = startsNewLine ? centre : sum / static_cast<double>(lines.back().size());
  }
  for (Observations& line : lines) sortLeftToRight(line);
  return lines;
}

std::string lineText(const Observations& line) {
  std::vector<std::string> texts;
  texts.reserve(line.size());
  for (const Observation& block : line) texts.push_back(block.text);
  return joined(texts, " ");
}

std::string joinedText(const Observations& observations, double lineThreshold) {
  std::vector<std::string> lines;
  for (const Observations& line : groupedByLine(observations, lineThreshold)) lines.push_back(lineText(line));
  return joined(lines, "\n");
}

}  // namespace pravik
