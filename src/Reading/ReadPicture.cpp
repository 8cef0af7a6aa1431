#include "Reading/ReadPicture.h"

#include <exception>
#include <new>

#include "Reading/BankCardReading.h"
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

}  // namespace

Reading readPicture(const ReadingParts& parts, const Image& image, OCRScanMode mode) {
  try {
    ReadingParts onPicture = parts;
    if (!parts.origin.picture && documentKind(mode).isCard() && isUsable(image))
      onPicture.origin.picture = uprightBitmap(*image.bitmap, image.orientation);
    return readAs(mode, onPicture, image);
  } catch (const OCRError& error) {
    return failed(error, reasonOf(error));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    return failed(OCRError::recognitionFailed(textOf(std::current_exception())), UnreadReason::engineFailed);
  }
}

}  // namespace pravik
