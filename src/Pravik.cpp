#include "Pravik.h"

#include <utility>
#include <variant>

#include "Async/RunOnPool.h"
#include "Reading/ReadPicture.h"

namespace pravik {
namespace {

/// Stops the work of a call when the caller goes, whichever way.
class StopAtEnd {
 public:
  explicit StopAtEnd(const std::stop_token& outer)
      : forward_(outer, [source = source_]() mutable { source.request_stop(); }) {}
  ~StopAtEnd() { source_.request_stop(); }
  StopAtEnd(const StopAtEnd&) = delete;
  StopAtEnd& operator=(const StopAtEnd&) = delete;

  std::stop_token token() const { return source_.get_token(); }

 private:
  std::stop_source source_;
  std::stop_callback<std::function<void()>> forward_;
};

/// Runs a reading on the pool, within its limits; the time runs from its beginning there.
template <class T>
Task<T> runWithin(ReadingLimits limits, std::shared_ptr<Dispatch> dispatch, ReadingParts parts,
                  std::function<T(const ReadingParts& parts)> reading) {
  const StopAtEnd stop(limits.stop);
  std::function<Result<T>()> work = [reading, parts, time = limits.time, date = limits.date,
                                     token = stop.token()]() -> Result<T> {
    ReadingParts limited = parts;
    limited.date = date.value_or(std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
    limited.limit = {.deadline = std::chrono::steady_clock::now() + time, .stop = token};
    if (token.stop_requested()) return tl::unexpected(OCRError::cancelled());
    return reading(limited);
  };
  co_return co_await runOnPool(std::move(dispatch), std::move(work));
}

/// The record of a reading of its kind; throws its error.
template <class Info>
Task<Info> infoOf(Task<Reading> task) {
  Reading reading = co_await std::move(task);
  if (!reading.record) throw OCRError(reading.record.error());
  co_return std::get<Info>(*std::move(reading.record));
}

}  // namespace

PravikSDK::PravikSDK(Platform platform) {
  parts_ = std::make_shared<ReadingParts>(
      ReadingParts{.recognizer = TextRecognizer(platform.textEngine, platform.dispatch),
                   .preprocessor = ImagePreprocessor(platform.imageRenderer, platform.rectangleDetector),
                   .barcodeDetector = platform.barcodeDetector,
                   .debugPictures = nullptr,
                   .accumulator = std::make_shared<CrossAttemptAccumulator>(),
                   .limit = {}});
  platform.stage.reset();
  platform_ = std::make_shared<Platform>(std::move(platform));
}

PravikSDK& PravikSDK::shared() {
  static PravikSDK sdk(Platform::current());
  return sdk;
}

ReadingParts PravikSDK::partsOfCall() const {
  ReadingParts parts = *parts_;
  if (*savesDebugImages_) parts.debugPictures = platform_->photoLibrary;
  return parts;
}

Task<Reading> PravikSDK::read(Image image, OCRScanMode mode, ReadingLimits limits) const {
  return runWithin<Reading>(
      std::move(limits), platform_->dispatch, partsOfCall(),
      [image = std::move(image), mode](const ReadingParts& parts) { return readPicture(parts, image, mode); });
}

Task<IDCardFrontInfo> PravikSDK::recognizeIDCardFront(Image image, ReadingLimits limits) const {
  return infoOf<IDCardFrontInfo>(read(std::move(image), OCRScanMode::idCardFront, std::move(limits)));
}

Task<IDCardBackInfo> PravikSDK::recognizeIDCardBack(Image image, ReadingLimits limits) const {
  return infoOf<IDCardBackInfo>(read(std::move(image), OCRScanMode::idCardBack, std::move(limits)));
}

Task<BankCardInfo> PravikSDK::recognizeBankCard(Image image, ReadingLimits limits) const {
  return infoOf<BankCardInfo>(read(std::move(image), OCRScanMode::bankCard, std::move(limits)));
}

Task<CodeScanResult> PravikSDK::recognizeCode(Image image, OCRScanMode mode, ReadingLimits limits) const {
  return infoOf<CodeScanResult>(runWithin<Reading>(
      std::move(limits), platform_->dispatch, partsOfCall(),
      [image = std::move(image), mode](const ReadingParts& parts) { return readCode(parts, image, mode); }));
}

Task<CardsReading> PravikSDK::recognizeCards(Image image, ReadingLimits limits) const {
  return runWithin<CardsReading>(
      std::move(limits), platform_->dispatch, partsOfCall(),
      [image = std::move(image)](const ReadingParts& parts) { return readCards(parts, image); });
}

Task<std::string> PravikSDK::recognizeRawText(Image image, SceneType scene, ReadingLimits limits) const {
  return runWithin<std::string>(
      std::move(limits), platform_->dispatch, partsOfCall(),
      [image = std::move(image), scene](const ReadingParts& parts) { return readText(parts, image, scene); });
}

CardCrops PravikSDK::crops(const Image& image, const Reading& reading) const {
  if (!image.bitmap) return {};
  return cardCrops(parts_->preprocessor, uprightBitmap(*image.bitmap, image.orientation), reading);
}

std::optional<BankCardInfo> PravikSDK::tryCrossAttemptFusion() const {
  return parts_->accumulator->tryFusion();
}

void PravikSDK::resetCrossAttemptAccumulator() const {
  parts_->accumulator->reset();
}

template <class T>
void PravikSDK::finish(Task<T> task, Completion<T> completion) const {
  runWithCompletion(platform_->dispatch, std::move(task), std::move(completion));
}

void PravikSDK::read(Image image, OCRScanMode mode, std::function<void(Reading)> completion,
                     ReadingLimits limits) const {
  finish<Reading>(read(std::move(image), mode, std::move(limits)),
                  [completion = std::move(completion)](Result<Reading> reading) {
                    completion(reading ? *std::move(reading) : failed(reading.error(), UnreadReason::cancelled));
                  });
}

void PravikSDK::recognizeIDCardFront(Image image, Completion<IDCardFrontInfo> completion, ReadingLimits limits) const {
  finish(recognizeIDCardFront(std::move(image), std::move(limits)), std::move(completion));
}

void PravikSDK::recognizeIDCardBack(Image image, Completion<IDCardBackInfo> completion, ReadingLimits limits) const {
  finish(recognizeIDCardBack(std::move(image), std::move(limits)), std::move(completion));
}

void PravikSDK::recognizeBankCard(Image image, Completion<BankCardInfo> completion, ReadingLimits limits) const {
  finish(recognizeBankCard(std::move(image), std::move(limits)), std::move(completion));
}

void PravikSDK::recognizeCode(Image image, OCRScanMode mode, Completion<CodeScanResult> completion,
                              ReadingLimits limits) const {
  finish(recognizeCode(std::move(image), mode, std::move(limits)), std::move(completion));
}

void PravikSDK::recognizeCards(Image image, Completion<CardsReading> completion, ReadingLimits limits) const {
  finish(recognizeCards(std::move(image), std::move(limits)), std::move(completion));
}

void PravikSDK::recognizeRawText(Image image, SceneType scene, Completion<std::string> completion,
                                 ReadingLimits limits) const {
  finish(recognizeRawText(std::move(image), scene, std::move(limits)), std::move(completion));
}

bool PravikSDK::checkCameraPermission() const {
  const auto& camera = platform_->captureSystem;
  return camera && camera->authorizationStatus() == CameraAuthorizationStatus::authorized;
}

Task<bool> PravikSDK::requestCameraPermission() const {
  return suspendUntilCalled<bool>([camera = platform_->captureSystem](const auto& completion) {
    const auto status = camera ? camera->authorizationStatus() : CameraAuthorizationStatus::denied;
    if (status != CameraAuthorizationStatus::notDetermined)
      return completion(status == CameraAuthorizationStatus::authorized);
    camera->requestAccess([completion](bool granted) { completion(granted); });
  });
}

void PravikSDK::requestCameraPermission(Completion<bool> completion) const {
  finish(requestCameraPermission(), std::move(completion));
}

}  // namespace pravik
