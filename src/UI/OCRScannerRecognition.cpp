
#include "UI/OCRScannerViewController.h"
#include "UI/PhotoCrop.h"
#include "Utils/Format.h"
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
      [&] { return formatted("开始 OCR 识别, 模式: {}, 图片尺寸: {}", description(mode), sizeDescription(image)); });
  auto finish = [number = ++recognition_](OCRScannerViewController& screen, const Reading& reading) {
    if (number != screen.recognition_) return;
    if (reading.record) {
      screen.handleSuccess(*reading.record, reading.report);
    } else {
      screen.handleRecognitionFailure(reading.record.error());
    }
  };
  // One that was overtaken has nothing left to work for.
  recognitionStop_.request_stop();
  recognitionStop_ = std::stop_source();
  ocr_.read(image, mode, deferred(std::move(finish)), {.stop = recognitionStop_.get_token()});
}

void OCRScannerViewController::handleSuccess(const Record& record, const ReadingReport& reading) {
  lastReport_ = reading;
  if (documentKind(record).isCard())
    OCRLogger::info([&] { return formatted("识别成功, autoDismiss={}", autoDismissOnSuccess); });
  else
    cancel(noDetectionWorkItem_);
  setState(Kind::success);
  auto report = [record](OCRScannerViewController& screen) {
    screen.tellDelegate({record, screen.lastCapturedImage_});
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
      [&] { return formatted("识别失败 ({}/{}): {}", retryCount_, maxRetryCount, error.errorDescription()); });
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
  dismissAnimated([error](OCRScannerViewController& screen) { screen.tellDelegate({tl::unexpected(error)}); });
}

}  // namespace pravik
