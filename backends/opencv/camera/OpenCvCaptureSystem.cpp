#include "backends/opencv/camera/OpenCvCaptureSystem.h"

#include <linux/videodev2.h>

#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "Records/CodeType.h"
#include "backends/opencv/camera/DeviceFile.h"
#include "backends/opencv/camera/FrameFlow.h"

namespace pravik {
namespace {

/// The controls of a camera through Video4Linux, as far as its driver offers them: focus, exposure, and the light of a
/// flash as torch. Drivers cannot be told where to measure the light. A video file has no controls.
class OpenCvCaptureDevice final : public CaptureDevice {
 public:
  explicit OpenCvCaptureDevice(const VideoSource& source) {
    if (source.isCamera) camera_ = source.path;
  }

  void lockForConfiguration() override {
    // Each control is set in one request, so that nothing has to be held; the camera must only be there.
    if (camera_ && !DeviceFile(*camera_).isOpen()) throw std::runtime_error("the camera cannot be opened");
  }
  void unlockForConfiguration() override {}

  bool supportsContinuousAutoFocus() const override { return offers(V4L2_CID_FOCUS_AUTO); }
  void setContinuousAutoFocus() override { set(V4L2_CID_FOCUS_AUTO, 1); }

  bool supportsContinuousAutoExposure() const override { return offers(V4L2_CID_EXPOSURE_AUTO); }
  void setContinuousAutoExposure() override {
    // Cameras whose aperture is fixed know only the second of the two.
    if (!set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_AUTO)) set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY);
  }
  bool supportsExposurePointOfInterest() const override { return false; }
  void setExposurePointOfInterest(Point /*point*/) override {}

  bool hasTorch() const override { return offers(V4L2_CID_FLASH_LED_MODE); }
  bool isTorchOn() const override {
    v4l2_control control{.id = V4L2_CID_FLASH_LED_MODE, .value = V4L2_FLASH_LED_MODE_NONE};
    return camera_ && DeviceFile(*camera_).control(VIDIOC_G_CTRL, control) &&
           control.value == V4L2_FLASH_LED_MODE_TORCH;
  }
  void setTorch(bool on) override {
    set(V4L2_CID_FLASH_LED_MODE, on ? V4L2_FLASH_LED_MODE_TORCH : V4L2_FLASH_LED_MODE_NONE);
  }

 private:
  bool offers(unsigned control) const {
    v4l2_queryctrl query{};
    query.id = control;
    return camera_ && DeviceFile(*camera_).control(VIDIOC_QUERYCTRL, query) &&
           (query.flags & (V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY)) == 0;
  }
  bool set(unsigned control, int value) const {
    v4l2_control setting{.id = control, .value = value};
    return camera_ && DeviceFile(*camera_).control(VIDIOC_S_CTRL, setting);
  }

  /// Absent for a video file.
  std::optional<std::filesystem::path> camera_;
};

/// The frames of a camera or a video file as a capture session. A camera's own flash is not used.
class OpenCvCaptureSession final : public CaptureSession {
 public:
  explicit OpenCvCaptureSession(const OpenCvCameraOptions& options)
      : flow_(std::make_shared<FrameFlow>(options.source, options.loops, options.pacer, options.onEnd)),
        barcodeDetector_(options.barcodeDetector),
        hasPreview_(options.hasPreview) {}
  ~OpenCvCaptureSession() override { flow_->stop(); }
  OpenCvCaptureSession(const OpenCvCaptureSession&) = delete;
  OpenCvCaptureSession& operator=(const OpenCvCaptureSession&) = delete;

  void beginConfiguration() override {}
  void commitConfiguration() override {}
  void usePhotoPreset() override {}
  bool canAddInput(const CaptureDevice& /*device*/) const override { return true; }
  void addInput(std::shared_ptr<CaptureDevice> /*device*/) override {}
  void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) override {
    flow_->setQueue(std::move(queue));
    flow_->onFrame = std::move(handler);
  }
  void addPhotoOutput() override {}
  void addMetadataOutput(std::shared_ptr<SerialQueue> queue, MetadataHandler handler) override {
    if (barcodeDetector_)
      flow_->codes = std::make_unique<FrameCodes>(barcodeDetector_, std::move(queue), std::move(handler));
  }

  bool isRunning() const override { return flow_->isRunning(); }
  void startRunning() override { flow_->start(); }
  void stopRunning() override { flow_->stop(); }

  bool supportsAutomaticFlash() const override { return false; }
  void capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) override {
    CapturedPhoto photo;
    if (const std::optional<Bitmap> newest = flow_->newestFrame())
      photo.image = Image{.bitmap = newest};
    else
      photo.error = "the camera has sent no picture";
    handler(std::move(photo));
  }

  std::vector<MetadataObjectType> availableMetadataObjectTypes() const override {
    std::vector<MetadataObjectType> types;
    if (flow_->codes)
      for (const CodeType& type : codeTypes) types.push_back({std::string(type.metadataObjectType)});
    return types;
  }
  void setMetadataObjectTypes(const std::vector<MetadataObjectType>& types) override {
    if (flow_->codes) flow_->codes->setTypes(types);
  }
  std::optional<Bitmap> previewPicture() const override { return hasPreview_ ? flow_->newestFrame() : std::nullopt; }

 private:
  std::shared_ptr<FrameFlow> flow_;
  std::shared_ptr<const BarcodeDetector> barcodeDetector_;
  bool hasPreview_;
};

}  // namespace

OpenCvCaptureSystem::OpenCvCaptureSystem(OpenCvCameraOptions options)
    : options_(std::move(options)), device_(std::make_shared<OpenCvCaptureDevice>(options_.source)) {}

CameraAuthorizationStatus OpenCvCaptureSystem::authorizationStatus() const {
  std::error_code error;
  const bool isThere = std::filesystem::exists(options_.source.path, error);
  return isThere && !mayBeOpened(options_.source) ? CameraAuthorizationStatus::denied
                                                  : CameraAuthorizationStatus::authorized;
}

void OpenCvCaptureSystem::requestAccess(std::function<void(bool granted)> completion) {
  completion(authorizationStatus() == CameraAuthorizationStatus::authorized);
}

std::shared_ptr<CaptureDevice> OpenCvCaptureSystem::backCamera() {
  std::error_code error;
  return std::filesystem::exists(options_.source.path, error) ? device_ : nullptr;
}

std::shared_ptr<CaptureSession> OpenCvCaptureSystem::makeSession() {
  return std::make_shared<OpenCvCaptureSession>(options_);
}

}  // namespace pravik
