#include "Reading/ReadingParts.h"

#include <algorithm>

#include "Platform/ImageCodec.h"
#include "Utils/Format.h"

#include "Utils/GuardedCall.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Print that is a fortieth of a card's height needs eight pixels.
constexpr int leastSide = 320;
/// Darker pictures than this have lost the print in the noise of the camera.
constexpr double darkMean = 0.16;

}  // namespace

ReadingParts ReadingParts::onPart(const Quadrilateral& corners, const Size& size) const {
  ReadingParts part = *this;
  part.origin.projection = origin.projection * Projection::onto(corners, size);
  return part;
}

Observations ReadingParts::recognize(const Bitmap& bitmap, TextRecognizer::Options options) const {
  options.limit = limit;
  Observations observations = recognizer.recognizeNow(bitmap, options);
  if (limit.stop.stop_requested()) throw OCRError::cancelled();
  if (seenTexts)
    for (const Observation& block : observations)
      seenTexts->push_back(origin.projection(cornersOf(inPixels(flipped(block.boundingBox), bitmap.size()))));
  return observations;
}

void ReadingParts::debugSaveImage(const Image& image, std::string_view label) const {
  if (!debugPictures || !image.bitmap) return;
  const auto save = [&] { debugPictures->save(uprightBitmap(*image.bitmap, image.orientation), std::string(label)); };
  if (const auto failure = failureOf(save))
    return OCRLogger::warning([&] { return formatted("调试图片保存失败: {} ({})", label, *failure); });
  OCRLogger::debug([&] { return formatted(" 调试图片已保存到相册: {}", label); });
}

bool ReadingParts::goesOn() const {
  if (limit.stop.stop_requested()) throw OCRError::cancelled();
  return !limit.isSpent();
}

CardOnPicture cardOn(const ReadingParts& parts, const Image& image, std::string_view name) {
  parts.debugSaveImage(image, formatted("{}-原图", name));
  ImagePreprocessor::FoundCard found = parts.preprocessor.findCard(image);
  CardOnPicture card{image, found.outline, parts};
  if (!found.outline) return card;
  if (!parts.origin.outline) card.parts.origin.outline = parts.origin.projection(*found.outline);
  if (!found.straightened) return card;
  parts.debugSaveImage(*found.straightened, formatted("{}-透视矫正", name));
  card.parts.origin.projection = parts.onPart(*found.outline, uprightSize(*found.straightened)).origin.projection;
  card.image = *std::move(found.straightened);
  card.outline.reset();
  return card;
}

bool isUsable(const Image& image) {
  return image.bitmap && hasAllowedSize(*image.bitmap);
}

Reading failed(const OCRError& error, UnreadReason reason) {
  return {.record = tl::unexpected(error), .report = {.unreadReason = reason, .stage = std::nullopt}};
}

UnreadReason reasonOfMissingRecord(const ReadingParts& parts, const Image& image, bool hasText) {
  if (parts.limit.isSpent()) return UnreadReason::timeSpent;
  if (!image.bitmap) return UnreadReason::invalidPicture;
  if (std::min(image.bitmap->width(), image.bitmap->height()) < leastSide) return UnreadReason::tooSmall;
  if (parts.preprocessor.analyzeImage(*image.bitmap).mean < darkMean) return UnreadReason::tooDark;
  if (hasText) return UnreadReason::noNumberFound;
  return parts.preprocessor.showsRectangle(image) ? UnreadReason::noTextFound : UnreadReason::noCardFound;
}

Reading withoutRecord(const ReadingParts& parts, const Image& image, bool hasText) {
  Reading reading = failed(OCRError::insufficientText(), reasonOfMissingRecord(parts, image, hasText));
  reading.report.turned = parts.turned;
  return reading;
}

}  // namespace pravik
