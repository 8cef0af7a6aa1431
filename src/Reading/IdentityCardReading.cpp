#include "Reading/ReadPicture.h"

#include <utility>

#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "Reading/TextToRecord.h"
#include "Reading/UprightPicture.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

Image straightened(const ReadingParts& parts, const Image& image) {
  parts.debugSaveImage(image, "身份证-原图");
  std::optional<Image> corrected = parts.preprocessor.attemptPerspectiveCorrection(image);
  if (!corrected) return image;
  parts.debugSaveImage(*corrected, "身份证-透视矫正");
  return *std::move(corrected);
}

/// Throws invalidImage when there is nothing to prepare.
Bitmap prepared(const ReadingParts& parts, const Image& card) {
  std::optional<Bitmap> prepared = parts.preprocessor.preprocessForIDCard(card);
  if (!prepared) throw OCRError::invalidImage();
  parts.debugSaveImage({.bitmap = prepared}, "身份证-自适应预处理");
  return *std::move(prepared);
}

}  // namespace

Reading readIdentityCard(const ReadingParts& parts, const Image& image, OCRScanMode side) {
  if (!isUsable(image)) throw OCRError::invalidImage();
  const Image card = straightened(parts, image);
  const Observations observations = parts.recognize(prepared(parts, card), TextRecognizer::Options::idCard);
  if (const auto upright = turnedUpright(parts, card, observations))
    return readIdentityCard(upright->parts, upright->image, side);
  if (observations.empty()) {
    OCRLogger::warning([] { return std::string("身份证识别返回 0 个文本块"); });
    return withoutRecord(parts, image, false);
  }
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): a side of a card has a scene.
  const SceneType scene = *documentKind(side).scene;
  validateScene(postCorrected(observations, scene), scene);
  return identityCardIn(parts, image, observations, side);
}

Reading identityCardIn(const ReadingParts& parts, const Image& card, const Observations& observations,
                       OCRScanMode side) {
  std::optional<Record> record = recordIn(observations, side);
  if (!record) return withoutRecord(parts, card, true);
  return {.record = *std::move(record),
          .report = {.unreadReason = std::nullopt, .stage = std::nullopt, .turned = parts.turned}};
}

}  // namespace pravik
