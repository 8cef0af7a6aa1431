#include "Reading/ReadPicture.h"

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
  return joinedText(parts.recognize(*prepared, options), textLineThreshold);
}

}  // namespace pravik
