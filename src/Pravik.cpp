#include "Pravik.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "RunOnPool.h"
#include "RunWithCompletion.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

using SceneType = PravikSDK::SceneType;

constexpr double rawTextLineThreshold = 0.025;

bool isUsable(const Image& image) {
  return image.bitmap && hasAllowedSize(*image.bitmap);
}

/// What reading one side of an identity card needs. Taken by value, so that a call outlives the SDK that began it.
struct IdentityCardReading {
  std::shared_ptr<Dispatch> dispatch;
  TextRecognizer recognizer;
  ImagePreprocessor preprocessor;
  SceneType scene;
};

template <class Info, class Parser>
Task<Info> recognizeIdentityCard(IdentityCardReading reading, Image image, Parser parser) {
  std::function<Result<Bitmap>()> prepare = [preprocessor = reading.preprocessor, image]() -> Result<Bitmap> {
    if (!isUsable(image)) return tl::unexpected(OCRError::invalidImage());
    const std::optional<Image> corrected = preprocessor.attemptPerspectiveCorrection(image);
    std::optional<Bitmap> prepared = preprocessor.preprocessForIDCard(corrected.value_or(image));
    if (!prepared) return tl::unexpected(OCRError::invalidImage());
    return *std::move(prepared);
  };
  image.bitmap.reset();
  Bitmap prepared = co_await runOnPool(reading.dispatch, std::move(prepare));
  const Observations observations =
      co_await reading.recognizer.recognize(std::move(prepared), TextRecognizer::Options::idCard);
  if (observations.empty()) {
    OCRLogger::warning([] { return std::string("身份证识别返回 0 个文本块"); });
    throw OCRError::insufficientText();
  }
  validateScene(observations, reading.scene);
  std::optional<Info> info = parser.parse(observations);
  if (!info) throw OCRError::insufficientText();
  co_return *std::move(info);
}

Task<std::string> readRawText(std::shared_ptr<Dispatch> dispatch, TextRecognizer recognizer,
                              ImagePreprocessor preprocessor, Image image, SceneType scene) {
  const bool isBankCard = scene == SceneType::bankCard;
  std::function<Result<Bitmap>()> prepare = [=]() -> Result<Bitmap> {
    if (!isUsable(image)) return tl::unexpected(OCRError::invalidImage());
    std::optional<Bitmap> prepared =
        isBankCard ? preprocessor.preprocessForBankCard(image) : preprocessor.preprocessForIDCard(image);
    if (!prepared) return tl::unexpected(OCRError::invalidImage());
    return *std::move(prepared);
  };
  image.bitmap.reset();
  Bitmap prepared = co_await runOnPool(std::move(dispatch), std::move(prepare));
  TextRecognizer::Options options = isBankCard ? TextRecognizer::Options::bankCard : TextRecognizer::Options::idCard;
  const Observations observations = co_await recognizer.recognize(std::move(prepared), std::move(options));
  co_return joinedText(observations, rawTextLineThreshold);
}

Result<CodeScanResult> readCode(const BarcodeDetector* detector, const Image& image, OCRScanMode mode) {
  if (!isUsable(image)) return tl::unexpected(OCRError::invalidImage());
  if (detector == nullptr) return tl::unexpected(OCRError::recognitionFailed("no barcode detector is available"));
  const std::vector<BarcodeSymbology> symbologies = visionSymbologies(mode);
  std::vector<BarcodeObservation> codes;
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): isUsable() has seen the bitmap.
  if (!symbologies.empty()) codes = detector->detect(uprightBitmap(*image.bitmap, image.orientation), symbologies);
  if (codes.empty()) {
    OCRLogger::info(
        [&] { return "VNDetectBarcodesRequest: 未检测到码（mode=" + std::string(description(mode)) + "）"; });
    return tl::unexpected(OCRError::insufficientText());
  }
  CodeScanResult result{codes.front().payload, pravikDisplayName(codes.front().symbology)};
  OCRLogger::info([&] { return "VNDetectBarcodesRequest 识别成功:" + result.symbology + " " + result.payload; });
  return result;
}

Task<BankCardInfo> infoOf(Task<BankCardReading> reading) {
  co_return (co_await std::move(reading)).info;
}

}  // namespace

PravikSDK::PravikSDK(Platform platform)
    : platform_(platform),
      dispatch_(platform.dispatch),
      barcodeDetector_(std::move(platform.barcodeDetector)),
      recognizer_(std::move(platform.textEngine), platform.dispatch),
      preprocessor_(std::move(platform.imageRenderer), std::move(platform.rectangleDetector)),
      photoLibrary_(std::move(platform.photoLibrary)),
      accumulator_(std::make_shared<CrossAttemptAccumulator>()) {
  platform_.stage.reset();
}

PravikSDK& PravikSDK::shared() {
  static PravikSDK sdk(Platform::current());
  return sdk;
}

const std::string& PravikSDK::version() {
  return PravikVersion::string();
}

const std::string& PravikSDK::fullVersion() {
  return PravikVersion::fullDescription();
}

Task<IDCardFrontInfo> PravikSDK::recognizeIDCardFront(Image image) const {
  return recognizeIdentityCard<IDCardFrontInfo>({dispatch_, recognizer_, preprocessor_, SceneType::idCardFront},
                                                std::move(image), frontParser_);
}

Task<IDCardBackInfo> PravikSDK::recognizeIDCardBack(Image image) const {
  return recognizeIdentityCard<IDCardBackInfo>({dispatch_, recognizer_, preprocessor_, SceneType::idCardBack},
                                               std::move(image), backParser_);
}

Task<CodeScanResult> PravikSDK::recognizeCode(Image image, OCRScanMode mode) const {
  return runOnPool<CodeScanResult>(dispatch_, [detector = barcodeDetector_, image = std::move(image), mode] {
    return readCode(detector.get(), image, mode);
  });
}

Task<std::string> PravikSDK::recognizeRawText(Image image, SceneType scene) const {
  return readRawText(dispatch_, recognizer_, preprocessor_, std::move(image), scene);
}

Task<BankCardReading> PravikSDK::readBankCard(Image image) const {
  return pravik::readBankCard({.dispatch = dispatch_,
                               .recognizer = recognizer_,
                               .preprocessor = preprocessor_,
                               .parser = bankParser_,
                               .debugPictures = debugSaveImagesToAlbum ? photoLibrary_ : nullptr,
                               .accumulator = accumulator_},
                              std::move(image));
}

Task<BankCardInfo> PravikSDK::recognizeBankCard(Image image) const {
  return infoOf(readBankCard(std::move(image)));
}

std::optional<BankCardInfo> PravikSDK::tryCrossAttemptFusion() const {
  return accumulator_->tryFusion();
}

void PravikSDK::resetCrossAttemptAccumulator() {
  accumulator_->reset();
}

void PravikSDK::recognizeIDCardFront(Image image, std::function<void(Result<IDCardFrontInfo>)> completion) const {
  runWithCompletion(dispatch_, recognizeIDCardFront(std::move(image)), std::move(completion));
}

void PravikSDK::recognizeIDCardBack(Image image, std::function<void(Result<IDCardBackInfo>)> completion) const {
  runWithCompletion(dispatch_, recognizeIDCardBack(std::move(image)), std::move(completion));
}

void PravikSDK::recognizeBankCard(Image image, std::function<void(Result<BankCardInfo>)> completion) const {
  runWithCompletion(dispatch_, recognizeBankCard(std::move(image)), std::move(completion));
}

}  // namespace pravik
