#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "BankCardInfo.h"
#include "BankCardPipeline.h"
#include "CodeScanResult.h"
#include "Core/ImagePreprocessor.h"
#include "Core/TextRecognizer.h"
#include "CrossAttemptAccumulator.h"
#include "IDCardBackInfo.h"
#include "IDCardFrontInfo.h"
#include "OCRError.h"
#include "OCRScanMode.h"
#include "OCRScannerResult.h"
#include "Parsers/BankCardParser.h"
#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"
#include "Platform/Platform.h"
#include "PravikVersion.h"
#include "Task.h"

namespace pravik {

/// Recognises cards, codes and text on still pictures. The operations may be called from any thread and may
/// overlap; each keeps what it needs alive until it ends. All failures are OCRError.
class PravikSDK {
 public:
  /// The kind of document that a text is expected to come from; `idCard` is either side.
  enum class SceneType : std::uint8_t { idCard, idCardFront, idCardBack, bankCard };

  explicit PravikSDK(Platform platform);

  /// The instance for the whole process, created from Platform::current() on first use.
  static PravikSDK& shared();
  /// "1.1.1"
  static const std::string& version();
  /// "1.1.1 (dev)"
  static const std::string& fullVersion();

  /// Reads the portrait side of an identity card. Throws invalidImage when the image has no pixels or too many,
  /// insufficientText when no text or no identity number was found, sceneMismatch when the picture shows something
  /// else, recognitionFailed when the text engine fails.
  Task<IDCardFrontInfo> recognizeIDCardFront(Image image) const;
  /// Reads the emblem side; insufficientText when neither the issuing office nor the validity was found.
  Task<IDCardBackInfo> recognizeIDCardBack(Image image) const;
  /// Reads a bank card in up to four stages. Its number may fail the Luhn check: luhnCheck() of its digits tells.
  /// invalidImage when the image has too many pixels, insufficientText when no stage found a number.
  Task<BankCardInfo> recognizeBankCard(Image image) const;
  /// The same with the stage that gave the number.
  Task<BankCardReading> readBankCard(Image image) const;
  /// The card whose number the failed photos since the last reset give together; absent when they give none.
  std::optional<BankCardInfo> tryCrossAttemptFusion() const;
  /// Forgets the failed photos: the next one is of another card.
  void resetCrossAttemptAccumulator();
  /// Reads a code: the first that the detector reports. insufficientText when there is none, or when the mode is
  /// that of a card.
  Task<CodeScanResult> recognizeCode(Image image, OCRScanMode mode) const;
  /// All text: blocks of a line joined with a space, lines with a line feed. No check of the scene and no parsing;
  /// the scene only decides how the picture is prepared.
  Task<std::string> recognizeRawText(Image image, SceneType scene) const;

  /// The same operations with a callback, which is called exactly once, on the main queue.
  void recognizeIDCardFront(Image image, std::function<void(Result<IDCardFrontInfo>)> completion) const;
  void recognizeIDCardBack(Image image, std::function<void(Result<IDCardBackInfo>)> completion) const;
  void recognizeBankCard(Image image, std::function<void(Result<BankCardInfo>)> completion) const;

  /// Whether the camera may be used now.
  bool checkCameraPermission() const;
  /// Asks the user, unless that was decided before; whether the camera may be used.
  Task<bool> requestCameraPermission() const;

  /// Shows a scanner on a stage and suspends until it reports. The host keeps the stage: when it goes, or lets go of
  /// the scanner without a word, the scan is cancelled. Throws cancelled when the user closes the scanner,
  /// cameraPermissionDenied, the error of the last permitted recognition, or recognitionFailed without a stage.
  Task<OCRScannerResult<BankCardInfo>> scanBankCard(const std::shared_ptr<Stage>& from) const;
  Task<OCRScannerResult<IDCardFrontInfo>> scanIDCardFront(const std::shared_ptr<Stage>& from) const;
  Task<OCRScannerResult<IDCardBackInfo>> scanIDCardBack(const std::shared_ptr<Stage>& from) const;
  /// QR and bar codes.
  Task<OCRScannerResult<CodeScanResult>> scanQRCode(const std::shared_ptr<Stage>& from) const;

  /// Whether the pictures of every stage of reading a bank card are saved to the platform's photo library. They show
  /// whole cards. To be set before a recognition starts.
  bool debugSaveImagesToAlbum = false;

 private:
  /// Without its stage, which would otherwise be kept alive by the scanners that it shows.
  Platform platform_;
  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<const BarcodeDetector> barcodeDetector_;
  TextRecognizer recognizer_;
  ImagePreprocessor preprocessor_;
  IDCardFrontParser frontParser_;
  IDCardBackParser backParser_;
  BankCardParser bankParser_;
  std::shared_ptr<PhotoLibrary> photoLibrary_;
  std::shared_ptr<CrossAttemptAccumulator> accumulator_;
};

/// Checks that a recognised text belongs to the expected kind of document. Lenient: a text with features of both
/// kinds, or of none, passes. Throws OCRError::sceneMismatch.
void validateScene(const Observations& observations, PravikSDK::SceneType expected);

}  // namespace pravik
