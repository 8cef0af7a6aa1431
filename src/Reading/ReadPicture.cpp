#include "Reading/ReadPicture.h"

#include <exception>
#include <memory>
#include <new>
#include <vector>

#include "Reading/BankCardReading.h"
#include "Reading/PictureWarnings.h"
#include "Utils/GuardedCall.h"

namespace pravik {
namespace {

Reading readAs(OCRScanMode mode, const ReadingParts& parts, const Image& image) {
  switch (mode) {
    case OCRScanMode::bankCard:
      return readBankCard(parts, image);
    case OCRScanMode::idCardFront:
    case OCRScanMode::idCardBack:
      return readIdentityCard(parts, image, mode);
    case OCRScanMode::qrCode:
      break;
  }
  return readCode(parts, image, mode);
}

UnreadReason reasonOf(const OCRError& error) {
  switch (error.kind()) {
    case OCRError::Case::invalidImage:
      return UnreadReason::invalidPicture;
    case OCRError::Case::sceneMismatch:
      return UnreadReason::wrongDocument;
    case OCRError::Case::cancelled:
      return UnreadReason::cancelled;
    default:
      return UnreadReason::engineFailed;
  }
}

Reading readOrFailed(const ReadingParts& parts, const Image& image, OCRScanMode mode) {
  try {
    return readAs(mode, parts, image);
  } catch (const OCRError& error) {
    return failed(error, reasonOf(error));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    return failed(OCRError::recognitionFailed(textOf(std::current_exception())), UnreadReason::engineFailed);
  }
}

}  // namespace

Reading readPicture(const ReadingParts& parts, const Image& image, OCRScanMode mode) {
  ReadingParts onPicture = parts;
  if (!parts.origin.picture && documentKind(mode).isCard() && isUsable(image)) {
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): what is usable has pixels.
    onPicture.origin.picture = uprightBitmap(*image.bitmap, image.orientation);
    onPicture.seenTexts = std::make_shared<std::vector<Quadrilateral>>();
  }
  Reading reading = readOrFailed(onPicture, image, mode);
  if (!reading.record && onPicture.seenTexts && !parts.limit.stop.stop_requested()) {
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): it stands where text is looked for.
    const Bitmap& picture = *onPicture.origin.picture;
    const auto outline = parts.preprocessor.findCard({.bitmap = picture}).outline;
    reading.report.warnings = lookedAt({picture, outline, *onPicture.seenTexts}).warnings;
    // What is no card need not have colours.
    std::erase(reading.report.warnings, ReadingWarning::greyCopy);
  }
  return reading;
}

}  // namespace pravik
