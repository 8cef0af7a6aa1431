#include "Reading/ReadPicture.h"

#include <utility>

#include "Reading/CardReport.h"
#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "Reading/TextToRecord.h"
#include "Reading/UprightPicture.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Throws invalidImage when there is nothing to prepare.
Bitmap prepared(const ReadingParts& parts, const Image& card) {
  std::optional<Bitmap> prepared = parts.preprocessor.preprocessForIDCard(card);
  if (!prepared) throw OCRError::invalidImage();
  parts.debugSaveImage({.bitmap = prepared}, "身份证-自适应预处理");
  return *std::move(prepared);
}

}  // namespace

Reading readIdentityCard(const ReadingParts& given, const Image& image, OCRScanMode side) {
  if (!isUsable(image)) throw OCRError::invalidImage();
  const CardOnPicture card = cardOn(given, image, "身份证");
  const ReadingParts& parts = card.parts;
  const Observations observations = parts.recognize(prepared(parts, card.image), TextRecognizer::Options::idCard);
  if (const auto upright = turnedUpright(parts, card.image, observations))
    return readIdentityCard(upright->parts, upright->image, side);
  if (observations.empty()) {
    OCRLogger::warning([] { return std::string("身份证识别返回 0 个文本块"); });
    return withoutRecord(parts, image, false);
  }
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a side of a card has a scene.
  const SceneType scene = *documentKind(side).scene;
  validateScene(postCorrected(observations, scene), scene);
  return identityCardIn(parts, card.image, observations, side);
}

Reading identityCardIn(const ReadingParts& parts, const Image& card, const Observations& observations,
                       OCRScanMode side) {
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a side of a card has a scene.
  const Observations corrected = postCorrected(observations, *documentKind(side).scene);
  std::optional<Record> record = recordInCorrected(corrected, side);
  if (!record) return withoutRecord(parts, card, true);
  return withReport(parts, uprightSize(card), corrected, *std::move(record));
}

}  // namespace pravik
