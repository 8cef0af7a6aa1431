#include <fmt/format.h>

#include "RunWithCompletion.h"
#include "UI/OCRScannerViewController.h"
#include "UI/PhotoCrop.h"
#include "Utils/OCRLogger.h"

// The scanner's way from the picture to the report.
namespace pravik {
namespace {

/// How long the user sees the success before the screen closes.
constexpr std::chrono::milliseconds successDuration{300};

}  // namespace

void OCRScannerViewController::handlePickedPicture(const std::optional<Image>& picture) {
  if (!picture) return;
  camera_->stop();
  lastCapturedImage_ = picture;
  ocr_.resetCrossAttemptAccumulator();
  isAlbumMode_ = true;
  frames_->isRecognizing = true;
  performOCR(*picture);
}

void OCRScannerViewController::performOCR(const Image& image) {
  const OCRScanMode mode = overlayView_->scanMode();
  setState(Kind::recognizing);
  OCRLogger::info(
      [&] { return fmt::format("开始 OCR 识别, 模式: {}, 图片尺寸: {}", description(mode), sizeDescription(image)); });
  switch (mode) {
    case OCRScanMode::bankCard:
      recognize(ocr_.recognizeBankCard(image));
      break;
    case OCRScanMode::idCardFront:
      recognize(ocr_.recognizeIDCardFront(image));
      break;
    case OCRScanMode::idCardBack:
      recognize(ocr_.recognizeIDCardBack(image));
      break;
    case OCRScanMode::qrCode:
      recognize(ocr_.recognizeCode(image, mode));
      break;
  }
}

template <class Info>
void OCRScannerViewController::recognize(Task<Info> task) {
  auto finish = [number = ++recognition_](OCRScannerViewController& screen, const Result<Info>& result) {
    if (number != screen.recognition_) return;
    if (result) {
      screen.handleSuccess(*result);
    } else {
      screen.handleRecognitionFailure(result.error());
    }
  };
  runWithCompletion<Info>(dispatch_, std::move(task), deferred(std::move(finish)));
}

void OCRScannerViewController::handleSuccess(const BankCardInfo& info) {
  handleRecord(info, &OCRScannerDelegate::scannerDidRecognizeBankCard);
}

void OCRScannerViewController::handleSuccess(const IDCardFrontInfo& info) {
  handleRecord(info, &OCRScannerDelegate::scannerDidRecognizeIDCardFront);
}

void OCRScannerViewController::handleSuccess(const IDCardBackInfo& info) {
  handleRecord(info, &OCRScannerDelegate::scannerDidRecognizeIDCardBack);
}

void OCRScannerViewController::handleSuccess(const CodeScanResult& code) {
  cancel(noDetectionWorkItem_);
  reportSuccess(code, &OCRScannerDelegate::scannerDidScanCode);
}

template <class Info>
void OCRScannerViewController::handleRecord(const Info& info, SuccessMessage<Info> message) {
  OCRLogger::info([&] { return fmt::format("识别成功, autoDismiss={}", autoDismissOnSuccess); });
  reportSuccess(info, message);
}

template <class Info>
void OCRScannerViewController::reportSuccess(const Info& info, SuccessMessage<Info> message) {
  setState(Kind::success);
  auto report = [info, message](OCRScannerViewController& screen) {
    screen.tellDelegate(message, OCRScannerResult<Info>{info, screen.lastCapturedImage_});
  };
  if (!autoDismissOnSuccess) {
    report(*this);
    frames_->isRecognizing = false;
    return;
  }
  auto close = [report](OCRScannerViewController& screen) {
    screen.camera_->stop();
    screen.camera_->turnOffTorch();
    screen.dismissAnimated(report);
  };
  dispatch_->asyncAfter(successDuration, deferred(std::move(close)));
}

void OCRScannerViewController::handleRecognitionFailure(const OCRError& error) {
  if (isAlbumMode_) {
    handleAlbumFailure();
    return;
  }
  ++retryCount_;
  OCRLogger::warning(
      [&] { return fmt::format("识别失败 ({}/{}): {}", retryCount_, maxRetryCount, error.errorDescription()); });
  if (retryCount_ >= maxRetryCount) {
    handleLastFailure(error);
    return;
  }
  setState(ScanState::failed("识别失败，请调整角度重试"));
  resetForNewScan();
}

void OCRScannerViewController::handleAlbumFailure() {
  isAlbumMode_ = false;
  resetForNewScan();
  setState(ScanState::failed("照片识别失败，请重新选择照片或者扫描"));
  camera_->start();
  overlayView_->startScanLineAnimation();
}

void OCRScannerViewController::handleLastFailure(const OCRError& error) {
  if (scanMode_ == OCRScanMode::bankCard) {
    if (const std::optional<BankCardInfo> card = ocr_.tryCrossAttemptFusion()) {
      OCRLogger::info([&] { return "跨拍照融合挽救成功: " + card->cardNumber; });
      handleSuccess(*card);
      return;
    }
  }
  setState(ScanState::failed("识别失败，请重新对准卡片"));
  camera_->stop();
  camera_->turnOffTorch();
  dismissAnimated([error](OCRScannerViewController& screen) {
    screen.tellDelegate(&OCRScannerDelegate::scannerDidFailWithError, error);
  });
}

}  // namespace pravik
