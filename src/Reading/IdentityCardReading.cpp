#include "Reading/ReadPicture.h"

#include <utility>

#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "Reading/TextToRecord.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Throws invalidImage when there is nothing to prepare.
Bitmap prepared(const ReadingParts& parts, const Image& image) {
  if (!isUsable(image)) throw OCRError::invalidImage();
  parts.debugSaveImage(image, "身份证-原图");
  const std::optional<Image> corrected = parts.preprocessor.attemptPerspectiveCorrection(image);
  if (corrected) parts.debugSaveImage(*corrected, "身份证-透视矫正");
  std::optional<Bitmap> prepared = parts.preprocessor.preprocessForIDCard(corrected.value_or(image));
  if (!prepared) throw OCRError::invalidImage();
  parts.debugSaveImage({.bitmap = prepared}, "身份证-自适应预处理");
  return *std::move(prepared);
}

}  // namespace

Reading readIdentityCard(const ReadingParts& parts, const Image& image, OCRScanMode side) {
  const Observations observations = parts.recognize(prepared(parts, image), TextRecognizer::Options::idCard);
  if (observations.empty()) {
    OCRLogger::warning([] { return std::string("身份证识别返回 0 个文本块"); });
    return withoutRecord(parts, image, false);
  }
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a side of a card has a scene.
  const SceneType scene = *documentKind(side).scene;
  validateScene(postCorrected(observations, scene), scene);
  std::optional<Record> record = recordIn(observations, side);
  if (!record) return withoutRecord(parts, image, true);
  return {.record = *std::move(record), .report = {}};
}

}  // namespace pravik
