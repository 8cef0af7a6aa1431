// Scans a bank card with a camera of one's own and without a window. Usage: own-camera PICTURE
#include <atomic>
#include <future>
#include <iostream>
#include <thread>

#include "Async/ScannerContinuationAdapter.h"
#include "Pravik.h"
#include "UI/OCRScannerViewController.h"
#include "backends/DefaultPlatform.h"

using namespace pravik;

/// Films a picture that does not move, 30 times a second, on a thread of its own. The camera of this machine, its
/// controls, of which it has none, and the flow of its pictures are one object here.
class OwnCamera : public CaptureSystem,
                  public CaptureDevice,
                  public CaptureSession,
                  public std::enable_shared_from_this<OwnCamera> {
 public:
  OwnCamera(std::shared_ptr<Dispatch> dispatch, Image picture)
      : dispatch_(std::move(dispatch)), picture_(std::move(picture)) {}

  CameraAuthorizationStatus authorizationStatus() const override { return CameraAuthorizationStatus::authorized; }
  void requestAccess(std::function<void(bool granted)> completion) override { completion(true); }
  std::shared_ptr<CaptureDevice> backCamera() override { return shared_from_this(); }
  std::shared_ptr<CaptureSession> makeSession() override { return shared_from_this(); }

  void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) override {
    queue_ = std::move(queue);
    handler_ = std::move(handler);
  }
  bool isRunning() const override { return thread_.joinable(); }
  void startRunning() override {
    thread_ = std::jthread([this](const std::stop_token& stop) {
      for (; !stop.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(33))) deliver();
    });
  }
  void stopRunning() override { thread_ = {}; }
  void capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) override { handler({picture_, {}}); }
  std::optional<Bitmap> previewPicture() const override { return picture_.bitmap; }

  void beginConfiguration() override {}
  void commitConfiguration() override {}
  void usePhotoPreset() override {}
  bool canAddInput(const CaptureDevice& /*device*/) const override { return true; }
  void addInput(std::shared_ptr<CaptureDevice> /*device*/) override {}
  void addPhotoOutput() override {}
  void addMetadataOutput(std::shared_ptr<SerialQueue> /*queue*/, MetadataHandler /*handler*/) override {}
  bool supportsAutomaticFlash() const override { return false; }
  std::vector<MetadataObjectType> availableMetadataObjectTypes() const override { return {}; }
  void setMetadataObjectTypes(const std::vector<MetadataObjectType>& /*types*/) override {}

  void lockForConfiguration() override {}
  void unlockForConfiguration() override {}
  bool supportsContinuousAutoFocus() const override { return false; }
  void setContinuousAutoFocus() override {}
  bool supportsContinuousAutoExposure() const override { return false; }
  void setContinuousAutoExposure() override {}
  bool supportsExposurePointOfInterest() const override { return false; }
  void setExposurePointOfInterest(Point /*point*/) override {}
  bool hasTorch() const override { return false; }
  bool isTorchOn() const override { return false; }
  void setTorch(bool /*on*/) override {}

 private:
  /// Hands a frame to the scanner's queue, unless the one before is still being looked at.
  void deliver() {
    if (isBusy_.exchange(true)) return;
    queue_->async([weak = weak_from_this()] {
      const auto camera = weak.lock();
      if (!camera) return;
      if (camera->isRunning()) camera->handler_({camera->picture_.bitmap});
      camera->isBusy_ = false;
    });
  }

  std::shared_ptr<Dispatch> dispatch_;  ///< its queues must live as long as the thread that uses them
  Image picture_;
  std::shared_ptr<SerialQueue> queue_;
  FrameHandler handler_;
  std::atomic<bool> isBusy_ = false;
  std::jthread thread_;
};

int main(int argumentCount, char** arguments) try {
  Platform platform = makeDefaultPlatform();
  platform.captureSystem =
      std::make_shared<OwnCamera>(platform.dispatch, platform.imageCodec->load(arguments[argumentCount - 1]));

  std::promise<std::string> end;
  ScannerContinuationAdapter::Callbacks callbacks;
  callbacks.onBankCard = [&](const auto& scanned) { end.set_value(scanned.info.cardNumber); };
  callbacks.onError = [&](const OCRError& error) { end.set_value(error.errorDescription()); };
  const auto listener = std::make_shared<ScannerContinuationAdapter>(callbacks);
  auto screen = std::make_shared<OCRScannerViewController>(OCRScanMode::bankCard, false, PravikSDK(platform), platform);
  screen->delegate = listener;
  // What a stage does with a screen, on the main queue.
  platform.dispatch->async([screen] {
    screen->viewDidLoad();
    screen->viewWillAppear();
  });
  std::cout << end.get_future().get() << '\n';
  std::promise<void> gone;
  platform.dispatch->async([&] {
    screen->viewWillDisappear();
    screen.reset();
    gone.set_value();
  });
  gone.get_future().wait();
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
