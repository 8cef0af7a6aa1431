#include "Reading/ReadPicture.h"
#include "Reading/UprightPicture.h"

namespace pravik {

std::string readText(const ReadingParts& parts, const Image& image, SceneType scene) {
  if (!isUsable(image)) throw OCRError::invalidImage();
  const bool isBankCard = scene == SceneType::bankCard;
  parts.debugSaveImage(image, "文字-原图");
  const std::optional<Bitmap> prepared =
      isBankCard ? parts.preprocessor.preprocessForBankCard(image) : parts.preprocessor.preprocessForIDCard(image);
  if (!prepared) throw OCRError::invalidImage();
  parts.debugSaveImage({.bitmap = prepared}, "文字-自适应预处理");
  const auto& options = isBankCard ? TextRecognizer::Options::bankCard : TextRecognizer::Options::idCard;
  const Observations observations = parts.recognize(*prepared, options);
  if (const auto upright = turnedUpright(parts, image, observations))
    return readText(upright->parts, upright->image, scene);
  return joinedText(observations, textLineThreshold);
}

}  // namespace pravik
