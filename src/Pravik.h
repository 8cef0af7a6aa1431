#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Async/OCRScannerDelegate.h"
#include "Async/Task.h"
#include "Platform/Platform.h"
#include "Reading/CardCrops.h"
#include "Reading/CardReading.h"
#include "Reading/Reading.h"
#include "Records/DocumentKind.h"
#include "Records/OCRError.h"
#include "Records/PravikVersion.h"
#include "Utils/OCRLogger.h"

namespace pravik {

struct ReadingParts;

/// Recognises cards, codes and text on still pictures. The operations may be called from any thread and may
/// overlap; each keeps what it needs alive until it ends. All failures are OCRError: `cancelled` too, when the limits'
/// stop token, the caller's loop or the platform's dispatch ends a call.
///
/// A copy is another handle to the same instance.
class PravikSDK {
 public:
  using SceneType = pravik::SceneType;

  explicit PravikSDK(Platform platform);

  /// The instance for the whole process, created from Platform::current() on first use.
  static PravikSDK& shared();
  /// "1.1.1"
  static const std::string& version() { return PravikVersion::string(); }
  /// "1.1.1 (dev)"
  static const std::string& fullVersion() { return PravikVersion::fullDescription(); }

  /// Reads a picture as what the mode says: the record or the error, and why nothing was read. Throws only what is no
  /// fault of the picture, such as cancelled.
  Task<Reading> read(Image image, OCRScanMode mode, ReadingLimits limits = {}) const;

  /// Reads the portrait side of an identity card. Throws invalidImage when the image has no pixels or too many,
  /// insufficientText when no text or no identity number was found, sceneMismatch when the picture shows something
  /// else, recognitionFailed when the text engine fails.
  Task<IDCardFrontInfo> recognizeIDCardFront(Image image, ReadingLimits limits = {}) const;
  /// Reads the emblem side; insufficientText when neither the issuing office nor the validity was found.
  Task<IDCardBackInfo> recognizeIDCardBack(Image image, ReadingLimits limits = {}) const;
  /// Reads a bank card in up to four stages. Its number may fail the Luhn check: luhnCheck() of its digits tells.
  /// invalidImage when the image has too many pixels, insufficientText when no stage found a number.
  Task<BankCardInfo> recognizeBankCard(Image image, ReadingLimits limits = {}) const;
  /// Reads a code: the first that the detector reports. insufficientText when there is none, or when the mode is
  /// that of a card.
  Task<CodeScanResult> recognizeCode(Image image, OCRScanMode mode, ReadingLimits limits = {}) const;
  /// Finds every card on a picture, of whatever kind and however it lies, and reads each. No card is an empty list.
  /// Throws invalidImage, and recognitionFailed when the text engine fails; what is wrong with one card is told there.
  Task<CardsReading> recognizeCards(Image image, ReadingLimits limits = {}) const;
  /// All text: blocks of a line joined with a space, lines with a line feed. No check of the scene and no parsing;
  /// the scene only decides how the picture is prepared.
  Task<std::string> recognizeRawText(Image image, SceneType scene, ReadingLimits limits = {}) const;

  /// Cuts out what a reading of the picture found: the card, the portrait, the row of the number. On the calling
  /// thread.
  CardCrops crops(const Image& image, const Reading& reading) const;

  /// The card whose number the failed photos since the last reset give together; absent when they give none.
  std::optional<BankCardInfo> tryCrossAttemptFusion() const;
  /// Forgets the failed photos: the next one is of another card.
  void resetCrossAttemptAccumulator() const;

  /// The same operations with a callback, which is called exactly once, on the main queue; what it throws is logged.
  template <class T>
  using Completion = std::function<void(Result<T>)>;
  void read(Image image, OCRScanMode mode, std::function<void(Reading)> completion, ReadingLimits limits = {}) const;
  void recognizeIDCardFront(Image image, Completion<IDCardFrontInfo> completion, ReadingLimits limits = {}) const;
  void recognizeIDCardBack(Image image, Completion<IDCardBackInfo> completion, ReadingLimits limits = {}) const;
  void recognizeBankCard(Image image, Completion<BankCardInfo> completion, ReadingLimits limits = {}) const;
  void recognizeCode(Image image, OCRScanMode mode, Completion<CodeScanResult> completion,
                     ReadingLimits limits = {}) const;
  void recognizeCards(Image image, Completion<CardsReading> completion, ReadingLimits limits = {}) const;
  void recognizeRawText(Image image, SceneType scene, Completion<std::string> completion,
                        ReadingLimits limits = {}) const;

  /// Whether the camera may be used now.
  bool checkCameraPermission() const;
  /// Asks the user, unless that was decided before; whether the camera may be used.
  Task<bool> requestCameraPermission() const;
  void requestCameraPermission(Completion<bool> completion) const;

  /// Shows a scanner on a stage and suspends until it reports. The host keeps the stage: when it goes, or lets go of
  /// the scanner without a word, the scan is cancelled. Throws cancelled when the user closes the scanner,
  /// cameraPermissionDenied, the error of the last permitted recognition, or recognitionFailed without a stage.
  Task<OCRScannerResult<BankCardInfo>> scanBankCard(const std::shared_ptr<Stage>& from) const;
  Task<OCRScannerResult<IDCardFrontInfo>> scanIDCardFront(const std::shared_ptr<Stage>& from) const;
  Task<OCRScannerResult<IDCardBackInfo>> scanIDCardBack(const std::shared_ptr<Stage>& from) const;
  /// QR and bar codes.
  Task<OCRScannerResult<CodeScanResult>> scanQRCode(const std::shared_ptr<Stage>& from) const;
  void scanBankCard(const std::shared_ptr<Stage>& from, Completion<OCRScannerResult<BankCardInfo>> completion) const;
  void scanIDCardFront(const std::shared_ptr<Stage>& from,
                       Completion<OCRScannerResult<IDCardFrontInfo>> completion) const;
  void scanIDCardBack(const std::shared_ptr<Stage>& from,
                      Completion<OCRScannerResult<IDCardBackInfo>> completion) const;
  void scanQRCode(const std::shared_ptr<Stage>& from, Completion<OCRScannerResult<CodeScanResult>> completion) const;

  /// Whether the pictures of every stage of a reading are saved to the platform's photo library; off at first. They
  /// show whole cards. Holds for the readings that begin from then on.
  bool debugSaveImagesToAlbum() const { return *savesDebugImages_; }
  void setDebugSaveImagesToAlbum(bool saves) const { *savesDebugImages_ = saves; }

 private:
  ReadingParts partsOfCall() const;
  template <class T>
  void finish(Task<T> task, Completion<T> completion) const;

  /// Without its stage, which would otherwise be kept alive by the scanners that it shows.
  std::shared_ptr<const Platform> platform_;
  std::shared_ptr<const ReadingParts> parts_;
  std::shared_ptr<std::atomic<bool>> savesDebugImages_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace pravik
