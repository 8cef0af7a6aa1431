#pragma once

#include "Platform/ManualDispatch.h"
#include "Pravik.h"
#include "UI/OCRScannerViewController.h"
#include "support/FakeCamera.h"
#include "support/FakeStage.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik::test {

/// Everything around a scanner, on fakes: a phone with a camera whose pictures are 640 x 1280, and an SDK that reads
/// what the test says.
struct Phone : FakeParts {
  std::shared_ptr<ManualDispatch> dispatch = std::make_shared<ManualDispatch>();
  std::shared_ptr<FakeStage> stage = std::make_shared<FakeStage>(dispatch);
  std::shared_ptr<FakeCaptureSystem> camera = std::make_shared<FakeCaptureSystem>();
  Platform platform = makePlatform(dispatch);
  std::unique_ptr<PravikSDK> sdk;

  Phone() {
    platform.stage = stage;
    platform.captureSystem = camera;
    sdk = std::make_unique<PravikSDK>(platform);
    camera->session->preview = plainPicture(640, 1280, 0, 0, 0);
    camera->session->offeredTypes = {{"AVMetadataObjectTypeQRCode"}};
    engine->blocks = portraitSide();
  }
  /// Lets what is under way come to its end, as a screen on its way out holds the clock that it waits for.
  ~Phone() { dispatch->advance(std::chrono::minutes(1)); }
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;

  /// The camera sends so many frames of this brightness.
  void frames(int count, std::uint8_t brightness = 128) const {
    const VideoFrame frame{plainPicture(40, 40, brightness, brightness, brightness)};
    for (int i = 0; i < count; ++i) {
      camera->session->sendFrame(frame);
      dispatch->runAll();
    }
  }
  /// A card lies still, until a photo is due if the light is right.
  void holdStill(std::uint8_t brightness = 128) const {
    rectangles->rectangles = {{{}, Rect{0.25, 0.5, 0.5, 0.25}, 0.9F}};
    frames(24, brightness);
  }
  void scriptPhotos(int count) const {
    for (int i = 0; i < count; ++i)
      camera->session->photos.push_back({Image{.bitmap = plainPicture(640, 1280, 200, 200, 200)}, std::nullopt});
  }
};

/// Notes what a screen reports, in a word or two each.
class Listener : public ScannerListener {
 public:
  std::vector<std::string> reports;
  std::optional<Image> picture;
  bool throws = false;

  Listener() : ScannerListener([this](const ScannerReport& report) { note(report); }) {}

 private:
  void note(const ScannerReport& report) {
    reports.push_back(report.record ? wordsOf(*report.record) : report.record.error().errorCode());
    picture = report.capturedImage;
    if (throws) throw std::runtime_error("the host is broken");
  }

  /// The kind and the first field.
  static std::string wordsOf(const Record& record) {
    const DocumentKind& kind = documentKind(record);
    return std::string(kind.commandName) + ' ' + std::get<std::string>(kind.fields.front().value(record));
  }
};

/// The screen that was presented last, and the one who hears of it.
struct Presented {
  std::shared_ptr<Listener> listener = std::make_shared<Listener>();
  /// The screen is the stage's to keep.
  std::weak_ptr<OCRScannerViewController> weak;

  OCRScannerViewController& screen() const { return *weak.lock(); }
  const ScannerOverlayView& overlay() const { return *screen().overlayView(); }
  void present(const std::shared_ptr<OCRScannerViewController>& made, Stage& stage) {
    made->delegate = listener;
    weak = made;
    stage.present(made, false, {});
  }
};

/// A phone with such a screen.
struct ScannerScreen : Phone, Presented {
  ScannerScreen() = default;
  explicit ScannerScreen(OCRScanMode mode) {
    scriptPhotos(2);
    present(mode);
  }
  ScannerOverlayView::ScanState::Kind state() const { return overlay().state().kind; }
  std::string status() const { return overlay().statusLabel()->text; }
  bool offersManualCapture() const { return !overlay().manualCaptureButton()->isHidden; }

  void present(OCRScanMode mode, bool showModeSwitch = false) {
    Presented::present(std::make_shared<OCRScannerViewController>(mode, showModeSwitch, *sdk, platform), *stage);
    dispatch->runAll();
  }
  /// What was reported once there was time for everything that is under way.
  std::vector<std::string> reports() const {
    dispatch->advance(std::chrono::seconds(1));
    return listener->reports;
  }
  void tap(const std::shared_ptr<Button>& button) const {
    screen().view().touch({button->frame.midX(), button->frame.midY()});
    dispatch->runAll();
  }
};

}  // namespace pravik::test
