#include "UI/OCRScannerViewController.h"

#include <algorithm>
#include <stdexcept>

#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

constexpr double switchTop = 8;
constexpr double switchHeight = 32;
/// At least 80; so much keeps the buttons in the corners clear.
constexpr double switchSideMargins = 112;
constexpr double segmentPadding = 20;
constexpr double switchBackgroundAlpha = 0.15;
constexpr Font switchFont{13, false};

/// What a segment of the mode switch stands for. That one stands for codes is a programming error.
const DocumentKind& switchableKind(std::size_t segment) {
  if (segment >= documentKinds().size() || !documentKinds()[segment].isCard())
    throw std::out_of_range("the segment cannot be selected");
  return documentKinds()[segment];
}

std::shared_ptr<Dispatch> required(std::shared_ptr<Dispatch> dispatch) {
  if (!dispatch) throw std::invalid_argument("a scanner needs a dispatch");
  return dispatch;
}

}  // namespace

OCRScannerViewController::OCRScannerViewController(OCRScanMode mode, bool showModeSwitch)
    : OCRScannerViewController(mode, showModeSwitch, PravikSDK::shared(), Platform::current()) {}

OCRScannerViewController::OCRScannerViewController(OCRScanMode mode, bool showModeSwitch, PravikSDK ocr,
                                                   const Platform& platform)
    : scanMode_(mode),
      showModeSwitch_(showModeSwitch),
      ocr_(std::move(ocr)),
      dispatch_(required(platform.dispatch)),
      captureSystem_(platform.captureSystem),
      stage_(platform.stage),
      camera_(std::make_shared<CameraManager>(platform.captureSystem, dispatch_)),
      frames_(std::make_shared<FrameMonitor>(std::make_shared<CardDetector>(platform.rectangleDetector, dispatch_))),
      overlayView_(std::make_shared<ScannerOverlayView>(platform.stage, dispatch_)) {}

void OCRScannerViewController::viewDidLoad() {
  view_->backgroundColor = colors::black;
  view_->addSubview(camera_->previewLayer());
  overlayView_->setScanMode(scanMode_);
  overlayView_->updateHintText();
  view_->addSubview(overlayView_);
  bindOverlay();
  if (showModeSwitch_) setupModeSwitch();
  viewDidLayoutSubviews();
  checkPermission();
}

void OCRScannerViewController::viewDidLayoutSubviews() {
  camera_->previewLayer()->frame = view_->bounds();
  overlayView_->frame = view_->bounds();
  overlayView_->safeAreaTop = view_->safeAreaTop;
  overlayView_->layoutSubviews();
  if (modeSwitchControl_) layoutModeSwitch();
}

void OCRScannerViewController::viewWillAppear() {
  if (const auto stage = stage_.lock()) stage->setNavigationBarHidden(true);
  camera_->start();
  overlayView_->startScanLineAnimation();
}

void OCRScannerViewController::viewWillDisappear() {
  if (const auto stage = stage_.lock()) stage->setNavigationBarHidden(false);
  camera_->stop();
  camera_->turnOffTorch();
  overlayView_->stopScanLineAnimation();
  cancel(noDetectionWorkItem_);
}

void OCRScannerViewController::bindOverlay() {
  overlayView_->onCloseTapped = deferred(&OCRScannerViewController::closeTapped);
  overlayView_->onTorchTapped = deferred(&OCRScannerViewController::torchTapped);
  overlayView_->onAlbumTapped = deferred(&OCRScannerViewController::albumTapped);
  overlayView_->onManualCaptureTapped = deferred(&OCRScannerViewController::manualCaptureTapped);
}

void OCRScannerViewController::setupModeSwitch() {
  modeSwitchControl_ = std::make_shared<SegmentedControl>();
  // Codes cannot be selected: the camera is bound for the screen's own mode, and cards are found in another way.
  for (const DocumentKind& kind : documentKinds())
    modeSwitchControl_->segments.push_back({std::string(kind.displayName), kind.isCard()});
  modeSwitchControl_->selectedSegment = static_cast<std::size_t>(scanMode_);
  modeSwitchControl_->backgroundColor = colors::white.withAlpha(switchBackgroundAlpha);
  modeSwitchControl_->font = switchFont;
  modeSwitchControl_->onChange = deferred(&OCRScannerViewController::modeSwitchChanged);
  view_->addSubview(modeSwitchControl_);
}

void OCRScannerViewController::layoutModeSwitch() {
  double widest = 0;
  if (const auto stage = stage_.lock())
    for (const auto& segment : modeSwitchControl_->segments)
      widest = std::max(widest, stage->textSize(segment.title, switchFont).width);
  const double natural = (widest + segmentPadding) * static_cast<double>(modeSwitchControl_->segments.size());
  const double width = std::min(natural, view_->frame.width - switchSideMargins);
  modeSwitchControl_->frame = {(view_->frame.width - width) / 2, view_->safeAreaTop + switchTop, width, switchHeight};
}

void OCRScannerViewController::modeSwitchChanged(std::size_t segment) {
  overlayView_->setScanMode(switchableKind(segment).mode);
  overlayView_->updateHintText();
  resetForNewScan();
}

void OCRScannerViewController::checkPermission() {
  const auto status = captureSystem_ ? captureSystem_->authorizationStatus() : CameraAuthorizationStatus::denied;
  switch (status) {
    case CameraAuthorizationStatus::restricted:
    case CameraAuthorizationStatus::denied:
      handlePermissionDenied();
      break;
    case CameraAuthorizationStatus::notDetermined:
      captureSystem_->requestAccess(deferredToMain(&OCRScannerViewController::handlePermissionAnswer));
      break;
    case CameraAuthorizationStatus::authorized:
      camera_->configure();
      bindDetector();
      break;
  }
}

void OCRScannerViewController::handlePermissionAnswer(bool granted) {
  if (!granted) {
    handlePermissionDenied();
    return;
  }
  camera_->configure();
  bindDetector();
  camera_->start();
}

void OCRScannerViewController::handlePermissionDenied() {
  OCRLogger::warning([] { return std::string("相机权限未授权"); });
  tellDelegate({tl::unexpected(OCRError::cameraPermissionDenied())});
  const auto stage = stage_.lock();
  if (!stage) return;
  auto openSettings = [](const OCRScannerViewController& screen) {
    if (const auto host = screen.stage_.lock()) host->openSettings();
  };
  auto giveUp = [](OCRScannerViewController& screen) {
    screen.tellDelegate({tl::unexpected(OCRError::cancelled())});
    screen.dismissAnimated();
  };
  stage->presentAlert({.title = "需要相机权限",
                       .message = "请在 设置 → 隐私 → 相机 中允许访问",
                       .actions = {{"去设置", Alert::ActionStyle::normal, deferred(openSettings)},
                                   {"取消", Alert::ActionStyle::cancel, deferred(giveUp)}}});
}

void OCRScannerViewController::bindDetector() {
  if (!accumulatorReset_) ocr_.resetCrossAttemptAccumulator();
  accumulatorReset_ = true;
  if (!documentKind(scanMode_).isCard()) {
    camera_->onCodeDetected =
        [frames = frames_, succeed = deferredToMain([](OCRScannerViewController& screen, const CodeScanResult& code) {
                             screen.handleSuccess(code);
                           })](const std::string& payload, const std::string& typeName) {
          if (frames->isRecognizing.exchange(true)) return;
          OCRLogger::info([&] { return "扫描到 " + typeName + ": " + payload; });
          succeed(CodeScanResult{payload, typeName});
        };
    camera_->setCodeTypes(metadataObjectTypes(scanMode_));
    return;
  }
  camera_->onVideoFrame = [frames = frames_, show = deferredToMain(&OCRScannerViewController::showQualityFeedback)](
                              const VideoFrame& frame) {
    if (const std::optional<FrameQuality> quality = frames->process(frame)) show(*quality);
  };
  frames_->detector()->onRectangleDetected = deferred(&OCRScannerViewController::handleOutline);
  frames_->detector()->onCardStable = deferred(&OCRScannerViewController::handleStableCard);
  camera_->onPhotoCaptured = deferredToMain(&OCRScannerViewController::handlePhoto);
}

void OCRScannerViewController::closeTapped() {
  camera_->stop();
  camera_->turnOffTorch();
  tellDelegate({tl::unexpected(OCRError::cancelled())});
  dismissAnimated();
}

void OCRScannerViewController::torchTapped() {
  camera_->toggleTorch();
  overlayView_->updateTorchButtonUI(camera_->isTorchOn());
  overlayView_->layoutSubviews();
}

void OCRScannerViewController::albumTapped() {
  if (const auto stage = stage_.lock())
    stage->pickPhoto(deferredToMain(&OCRScannerViewController::handlePickedPicture));
}

void OCRScannerViewController::manualCaptureTapped() {
  // Codes are read from the live picture; a stage may press the button by a key though it is never offered.
  if (!documentKind(scanMode_).isCard()) return;
  OCRLogger::info([] { return std::string("用户点击手动拍照"); });
  cancel(noDetectionWorkItem_);
  overlayView_->hideManualCaptureHint(false);
  triggerCapture();
}

void OCRScannerViewController::dismissAnimated(std::function<void(OCRScannerViewController&)> afterwards) {
  isLeaving_ = true;
  recognitionStop_.request_stop();
  // The report after the dismissal must come, so it holds the screen.
  std::function<void()> completion;
  if (afterwards) completion = [self = shared_from_this(), afterwards = std::move(afterwards)] { afterwards(*self); };
  if (const auto stage = stage_.lock()) {
    stage->dismiss(*this, true, std::move(completion));
  } else if (completion) {
    completion();
  }
}

void OCRScannerViewController::cancel(std::optional<WorkItem>& timer) {
  if (timer) timer->cancel();
  timer.reset();
}

}  // namespace pravik
