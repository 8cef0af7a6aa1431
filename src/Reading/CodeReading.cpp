#include "Reading/ReadPicture.h"

#include <utility>
#include <vector>

#include "Utils/OCRLogger.h"

namespace pravik {

Reading readCode(const ReadingParts& parts, const Image& image, OCRScanMode mode) {
  if (!isUsable(image)) throw OCRError::invalidImage();
  if (!parts.barcodeDetector) throw OCRError::recognitionFailed("没有可用的条码识别器");
  parts.debugSaveImage(image, "码-原图");
  const std::vector<BarcodeSymbology> symbologies = visionSymbologies(mode);
  std::vector<BarcodeObservation> codes;
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): isUsable() has seen the bitmap.
  const Bitmap upright = uprightBitmap(*image.bitmap, image.orientation);
  if (!symbologies.empty()) codes = parts.barcodeDetector->detect(upright, symbologies, parts.limit);
  if (codes.empty()) {
    OCRLogger::info(
        [&] { return "VNDetectBarcodesRequest: 未检测到码（mode=" + std::string(description(mode)) + "）"; });
    return failed(OCRError::insufficientText(),
                  parts.limit.isSpent() ? UnreadReason::timeSpent : UnreadReason::noCodeFound);
  }
  CodeScanResult result{codes.front().payload, pravikDisplayName(codes.front().symbology)};
  OCRLogger::info([&] { return "VNDetectBarcodesRequest 识别成功:" + result.symbology + " " + result.payload; });
  return {.record = std::move(result), .report = {}};
}

}  // namespace pravik
