#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

#include "Async/OCRScannerDelegate.h"
#include "Platform/Controls.h"
#include "Platform/Platform.h"
#include "Platform/Stage.h"
#include "Pravik.h"
#include "Records/OCRScanMode.h"
#include "UI/CameraManager.h"
#include "UI/CardDetector.h"
#include "UI/FrameMonitor.h"
#include "UI/ScannerOverlayView.h"
#include "Utils/GuardedCall.h"

namespace pravik {

/// The scanner's screen: follows a card in the camera's picture, takes a photo when it lies still and well lit, cuts it
/// to the frame on the screen, recognises it, tries again when that fails, and reports to its delegate. Codes are read
/// from the live picture, and a picked picture can stand in for the camera.
///
/// To be held by a std::shared_ptr and used on the main queue only. Whatever it put off does nothing once it has gone.
class OCRScannerViewController : public Screen, public std::enable_shared_from_this<OCRScannerViewController> {
 public:
  /// A screen of the current platform that recognises with the shared SDK.
  explicit OCRScannerViewController(OCRScanMode mode, bool showModeSwitch = false);
  /// Needs of the platform: the dispatch (without one, throws std::invalid_argument), the capture system (without one,
  /// the camera counts as denied), the rectangle detector (without one, the user takes the photo), and the stage that
  /// the screen will be presented on (without one, no animation, alert, picker or dismissal is shown).
  OCRScannerViewController(OCRScanMode mode, bool showModeSwitch, PravikSDK ocr, const Platform& platform);

  std::weak_ptr<OCRScannerDelegate> delegate;
  /// Kept alive as long as the screen.
  std::shared_ptr<OCRScannerDelegate> continuationDelegate;
  /// Whether the screen closes itself before it reports a success.
  bool autoDismissOnSuccess = true;
  /// The failed recognition that ends the screen: the second one by default.
  std::int64_t maxRetryCount = 2;
  /// How long no card may be seen before the user is offered to take the photo.
  std::chrono::milliseconds noDetectionTimeout{3000};

  OCRScanMode scanMode() const { return scanMode_; }
  /// The photo or picked picture that was recognised last, as it was handed to the recognition.
  const std::optional<Image>& lastCapturedImage() const { return lastCapturedImage_; }
  /// How the record was read that is reported, or was last; empty for a code, for a number that several photos gave
  /// together, and before.
  const ReadingReport& lastReport() const { return lastReport_; }
  /// A capture or a recognition is under way.
  bool isRecognizing() const { return frames_->isRecognizing; }
  /// Failed recognitions of photos so far.
  std::int64_t retryCount() const { return retryCount_; }
  const std::shared_ptr<ScannerOverlayView>& overlayView() const { return overlayView_; }
  /// Null unless the screen was made with one.
  const std::shared_ptr<SegmentedControl>& modeSwitchControl() const { return modeSwitchControl_; }

  View& view() override { return *view_; }
  void viewDidLoad() override;
  void viewDidLayoutSubviews() override;
  void viewWillAppear() override;
  void viewWillDisappear() override;

 private:
  using ScanState = ScannerOverlayView::ScanState;
  using Kind = ScanState::Kind;

  // Start-up and controls.
  void bindOverlay();
  void setupModeSwitch();
  void layoutModeSwitch();
  void modeSwitchChanged(std::size_t segment);
  void checkPermission();
  void handlePermissionAnswer(bool granted);
  void handlePermissionDenied();
  void bindDetector();
  void closeTapped();
  void torchTapped();
  void albumTapped();
  void manualCaptureTapped();

  // From the live picture to the photo.
  void showQualityFeedback(const FrameQuality& quality);
  void handleOutline(const std::optional<Rect>& rect);
  void handleStableCard();
  void scheduleNoDetectionTimerIfNeeded();
  void noDetectionTimerFired();
  void scheduleQualityBlockFallbackIfNeeded();
  void qualityBlockTimerFired();
  void triggerCapture();
  void flashShutter();
  void handlePhoto(const std::optional<Image>& photo);
  void resetForNewScan();

  // From the picture to the report.
  void handlePickedPicture(const std::optional<Image>& picture);
  void performOCR(const Image& image);
  void handleSuccess(const Record& record, const ReadingReport& reading = {});
  void handleRecognitionFailure(const OCRError& error);
  void handleAlbumFailure();
  void handleLastFailure(const OCRError& error);

  void setState(ScanState state) { overlayView_->setState(std::move(state)); }
  void dismissAnimated(std::function<void(OCRScannerViewController&)> afterwards = {});
  static void cancel(std::optional<WorkItem>& timer);

  void tellDelegate(const ScannerReport& report) {
    if (const auto listener = delegate.lock()) guardedCall([&] { tell(*listener, *this, report); });
  }

  /// Work for later on the main queue; it does nothing when the screen has gone, or is on its way out, by then.
  template <class Work>
  auto deferred(Work work) {
    return [weak = weak_from_this(), work = std::move(work)](const auto&... arguments) {
      const auto screen = weak.lock();
      if (screen && !screen->isLeaving_) std::invoke(work, *screen, arguments...);
    };
  }
  /// The same for work that another thread calls for: it moves to the main queue first, and never holds the screen on
  /// that thread.
  template <class Work>
  auto deferredToMain(Work work) {
    return [dispatch = dispatch_, later = deferred(std::move(work))](const auto&... arguments) {
      dispatch->async([later, arguments...] { later(arguments...); });
    };
  }

  OCRScanMode scanMode_;
  bool showModeSwitch_;
  PravikSDK ocr_;
  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<CaptureSystem> captureSystem_;
  /// Weak, since a stage holds its screens.
  std::weak_ptr<Stage> stage_;

  std::optional<Image> lastCapturedImage_;
  ReadingReport lastReport_;
  std::shared_ptr<CameraManager> camera_;
  std::shared_ptr<FrameMonitor> frames_;
  std::shared_ptr<ScannerOverlayView> overlayView_;
  std::shared_ptr<SegmentedControl> modeSwitchControl_;
  std::shared_ptr<View> view_ = std::make_shared<View>();

  std::int64_t retryCount_ = 0;
  bool accumulatorReset_ = false;
  bool isAlbumMode_ = false;
  bool isLeaving_ = false;
  /// Counts the recognitions, so that the outcome of one that was overtaken is dropped.
  std::int64_t recognition_ = 0;
  std::stop_source recognitionStop_;
  std::optional<WorkItem> noDetectionWorkItem_;
  std::optional<WorkItem> qualityBlockWorkItem_;
  /// The cut-out at the moment of capture; normalised to 0...1 of the unturned picture, origin at the top left.
  std::optional<Rect> pendingCropNormalizedRect_;
};

}  // namespace pravik
