
#include "UI/OCRScannerViewController.h"
#include "UI/PhotoCrop.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"

// The scanner's way from the live picture to the photo.
namespace pravik {
namespace {

using std::chrono::milliseconds;

/// How long a still card may be held back for glare or darkness before the user is offered to take the photo.
constexpr milliseconds qualityBlockTimeout{4000};
constexpr milliseconds shutterDuration{100};
constexpr double shutterAlpha = 0.7;
/// From this share of glare on, the log blames the whole picture and not a narrow band.
constexpr float specularBlame = 0.07F;

std::string percent(float ratio) {
  return formatted("{:.1f}%", ratio * 100.0F);
}

std::string ratios(const FrameQuality& quality) {
  return formatted("高光={} 峰值行={} 暗度={}", percent(quality.specularRatio), percent(quality.peakRowRatio),
                   percent(quality.darkRatio));
}

std::string blockReason(const FrameQuality& quality) {
  if (quality.specularRatio >= specularBlame) return "全局高光 " + percent(quality.specularRatio);
  return "窄带高光峰值行 " + percent(quality.peakRowRatio);
}

std::int64_t wholeSeconds(milliseconds time) {
  return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

}  // namespace

void OCRScannerViewController::showQualityFeedback(const FrameQuality& quality) {
  const Kind state = overlayView_->state().kind;
  if (isRecognizing() || (state != Kind::searching && state != Kind::detected)) return;
  const std::optional<std::string_view> hint = quality.qualityHint();
  if (!hint) {
    overlayView_->hideQualityWarning();
  } else if (*hint != overlayView_->hintLabel()->text) {
    overlayView_->showQualityWarning(std::string(*hint));
  }
}

void OCRScannerViewController::handleOutline(const std::optional<Rect>& rect) {
  overlayView_->highlightDetectedRect(rect, camera_->previewLayer()->pictureRect());
  const bool isDetected = overlayView_->state().kind == Kind::detected;
  if (rect) {
    camera_->lockExposureToPoint({rect->midX(), 1 - rect->midY()});
    if (!isDetected) setState(Kind::detected);
    return;
  }
  dispatch_->async(deferred([](const OCRScannerViewController& screen) { screen.overlayView_->hideQualityWarning(); }));
  scheduleNoDetectionTimerIfNeeded();
  if (isDetected) setState(Kind::searching);
}

void OCRScannerViewController::scheduleNoDetectionTimerIfNeeded() {
  if (noDetectionWorkItem_ || isRecognizing()) return;
  OCRLogger::debug(
      [&] { return formatted("无矩形检测，启动 {}s 手动拍照超时计时", wholeSeconds(noDetectionTimeout)); });
  noDetectionWorkItem_ =
      dispatch_->asyncAfter(noDetectionTimeout, deferred(&OCRScannerViewController::noDetectionTimerFired));
}

void OCRScannerViewController::noDetectionTimerFired() {
  if (isRecognizing()) return;
  noDetectionWorkItem_.reset();
  OCRLogger::info([&] { return formatted("矩形检测超时 {}s，显示手动拍照按钮", wholeSeconds(noDetectionTimeout)); });
  overlayView_->showManualCaptureHint();
}

void OCRScannerViewController::handleStableCard() {
  const FrameQuality quality = frames_->recentFrameQuality();
  OCRLogger::verbose([&] { return formatted("画质评估: {} isGood={}", ratios(quality), quality.isGoodForCapture); });
  if (quality.isGoodForCapture) {
    cancel(qualityBlockWorkItem_);
    cancel(noDetectionWorkItem_);
    overlayView_->hideManualCaptureHint(true);
    triggerCapture();
    return;
  }
  OCRLogger::debug(
      [&] { return formatted("画质门控：{} 超阈值，跳过本次自动拍照 [{}]", blockReason(quality), ratios(quality)); });
  scheduleQualityBlockFallbackIfNeeded();
}

void OCRScannerViewController::scheduleQualityBlockFallbackIfNeeded() {
  if (qualityBlockWorkItem_) return;
  qualityBlockWorkItem_ =
      dispatch_->asyncAfter(qualityBlockTimeout, deferred(&OCRScannerViewController::qualityBlockTimerFired));
}

void OCRScannerViewController::qualityBlockTimerFired() {
  if (isRecognizing()) return;
  qualityBlockWorkItem_.reset();
  OCRLogger::info([] { return std::string("画质持续不合格 4s，显示手动拍照按钮"); });
  overlayView_->showManualCaptureHint();
}

void OCRScannerViewController::triggerCapture() {
  if (frames_->isRecognizing.exchange(true)) return;
  OCRLogger::info([&] { return formatted("卡片稳定，触发自动拍照 (第 {} 次尝试)", retryCount_ + 1); });
  pendingCropNormalizedRect_.reset();
  const Rect& cutout = overlayView_->cutoutRect();
  if (cutout.width > 0 && cutout.height > 0)
    pendingCropNormalizedRect_ = camera_->previewLayer()->metadataOutputRectOfInterest(cutout);
  setState(Kind::capturing);
  flashShutter();
  camera_->capturePhoto();
}

void OCRScannerViewController::flashShutter() {
  const auto stage = stage_.lock();
  if (!stage) return;
  auto brighten = [](const OCRScannerViewController& screen) {
    if (const auto host = screen.stage_.lock())
      host->animate({.duration = shutterDuration, .changes = [view = screen.view_] { view->alpha = 1; }});
  };
  stage->animate({.duration = shutterDuration,
                  .changes = [view = view_] { view->alpha = shutterAlpha; },
                  .completion = deferred(brighten)});
}

void OCRScannerViewController::handlePhoto(const std::optional<Image>& photo) {
  if (!photo) {
    OCRLogger::error([] { return std::string("拍照失败: 未获取到图片"); });
    handleRecognitionFailure(OCRError::invalidImage());
    return;
  }
  OCRLogger::info([&] { return "拍照成功, 原图尺寸: " + sizeDescription(*photo); });
  const std::optional<Image> cropped = cropImageToCutout(*photo, pendingCropNormalizedRect_);
  if (cropped) OCRLogger::info([&] { return "已裁剪到扫描区域, 裁剪后尺寸: " + sizeDescription(*cropped); });
  const Image& picture = cropped ? *cropped : *photo;
  lastCapturedImage_ = picture;
  performOCR(picture);
}

void OCRScannerViewController::resetForNewScan() {
  frames_->isRecognizing = false;
  frames_->resetQuality();
  cancel(qualityBlockWorkItem_);
  cancel(noDetectionWorkItem_);
  overlayView_->hideManualCaptureHint(false);
  overlayView_->hideQualityWarning();
  frames_->detector()->reset();
}

}  // namespace pravik
