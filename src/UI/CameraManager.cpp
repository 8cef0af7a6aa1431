#include "UI/CameraManager.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Records/CodeScanResult.h"
#include "Utils/GuardedCall.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Holds a device for configuration while it lives, if it can.
class ConfigurationLock {
 public:
  explicit ConfigurationLock(CaptureDevice& device) : device_(device) {
    try {
      device_.lockForConfiguration();
    } catch (const std::exception& error) {
      failure_ = error.what();
    }
  }
  ~ConfigurationLock() {
    if (isHeld()) device_.unlockForConfiguration();
  }
  ConfigurationLock(const ConfigurationLock&) = delete;
  ConfigurationLock& operator=(const ConfigurationLock&) = delete;

  bool isHeld() const { return !failure_; }
  /// Why the device cannot be held, when it cannot.
  std::string failure() const { return failure_.value_or(""); }

 private:
  CaptureDevice& device_;
  std::optional<std::string> failure_;
};

void focusAndExposeContinuously(CaptureDevice& device) {
  const ConfigurationLock lock(device);
  if (!lock.isHeld()) return;
  if (device.supportsContinuousAutoFocus()) device.setContinuousAutoFocus();
  if (device.supportsContinuousAutoExposure()) device.setContinuousAutoExposure();
}

void setTorch(CaptureDevice* device, bool on) {
  if (device == nullptr || !device->hasTorch()) return;
  const ConfigurationLock lock(*device);
  if (lock.isHeld()) device->setTorch(on);
}

std::string joinedNames(const std::vector<MetadataObjectType>& types) {
  std::string names;
  for (const MetadataObjectType& type : types) names += (names.empty() ? "" : ", ") + type.rawValue;
  return names;
}

}  // namespace

CameraManager::CameraManager(std::shared_ptr<CaptureSystem> captureSystem, std::shared_ptr<Dispatch> dispatch)
    : captureSystem_(std::move(captureSystem)),
      dispatch_(std::move(dispatch)),
      sessionQueue_(dispatch_->makeSerialQueue("com.pravik.camera.session")) {}

CameraManager::~CameraManager() {
  // The preview is the main queue's, while the last to let go of the camera may be the session's queue. A queue that
  // ends drops its work where nothing may be destroyed that leads back to it, so that the work owns nothing.
  dispatch_->async([shown = std::weak_ptr(previewLayer_)] {
    if (const auto preview = shown.lock()) preview->session.reset();
  });
  if (!session_) return;
  sessionQueue_->async([session = std::move(session_)] {
    if (session->isRunning()) session->stopRunning();
  });
}

void CameraManager::setCodeTypes(std::vector<MetadataObjectType> types) {
  sessionQueue_->async([weak = weak_from_this(), types = std::move(types)] {
    if (const auto camera = weak.lock()) camera->applyCodeTypes(types);
  });
}

void CameraManager::onSessionQueue(void (CameraManager::*work)()) {
  sessionQueue_->async([weak = weak_from_this(), work] {
    if (const auto camera = weak.lock()) (camera.get()->*work)();
  });
}

void CameraManager::configureSession() {
  if (isConfigured_) return;
  if (!session_ && captureSystem_) session_ = captureSystem_->makeSession();
  if (session_) {
    session_->beginConfiguration();
    session_->usePhotoPreset();
  }
  const std::shared_ptr<CaptureDevice> camera = device();
  if (!camera || !session_->canAddInput(*camera)) {
    OCRLogger::error([] { return std::string("无法配置后置摄像头"); });
    if (session_) session_->commitConfiguration();
    return;
  }
  session_->addInput(camera);
  focusAndExposeContinuously(*camera);
  addOutputs();
  session_->commitConfiguration();
  dispatch_->async([preview = previewLayer_, weak = std::weak_ptr(session_)] { preview->session = weak.lock(); });
  isConfigured_ = true;
}

void CameraManager::addOutputs() {
  session_->addVideoOutput(sessionQueue_, [weak = weak_from_this()](const VideoFrame& frame) {
    const auto camera = weak.lock();
    if (camera && camera->onVideoFrame) guardedCall([&] { camera->onVideoFrame(frame); });
  });
  session_->addPhotoOutput();
  session_->addMetadataOutput(sessionQueue_, [weak = weak_from_this()](const std::vector<MetadataObject>& objects) {
    if (const auto camera = weak.lock()) camera->deliverCode(objects);
  });
}

void CameraManager::startSession() {
  if (isConfigured_ && !session_->isRunning()) session_->startRunning();
}

void CameraManager::stopSession() {
  if (isConfigured_ && session_->isRunning()) session_->stopRunning();
}

void CameraManager::takePhoto() {
  if (!isConfigured_ || !session_->isRunning()) {
    OCRLogger::warning([] { return std::string("capturePhoto: session 未就绪（模拟器 / 权限未授权），跳过拍照"); });
    deliverPhoto({});
    return;
  }
  session_->capturePhoto(session_->supportsAutomaticFlash(), [weak = weak_from_this()](const CapturedPhoto& photo) {
    if (const auto camera = weak.lock()) camera->deliverPhoto(photo);
  });
}

void CameraManager::deliverPhoto(const CapturedPhoto& photo) const {
  if (photo.error) OCRLogger::error([&] { return "拍照失败: " + *photo.error; });
  if (onPhotoCaptured) guardedCall([&] { onPhotoCaptured(photo.error ? std::nullopt : photo.image); });
}

void CameraManager::applyCodeTypes(const std::vector<MetadataObjectType>& types) {
  if (!isConfigured_) return;
  const std::vector<MetadataObjectType> offered = session_->availableMetadataObjectTypes();
  std::vector<MetadataObjectType> kept;
  std::ranges::copy_if(types, std::back_inserter(kept), [&](const MetadataObjectType& type) {
    return std::ranges::find(offered, type) != offered.end();
  });
  if (kept.empty()) return;
  session_->setMetadataObjectTypes(kept);
  OCRLogger::debug([&] { return "条码检测已启用: " + joinedNames(kept); });
}

void CameraManager::deliverCode(const std::vector<MetadataObject>& objects) const {
  if (objects.empty() || objects.front().stringValue.value_or("").empty() || !onCodeDetected) return;
  const MetadataObject& code = objects.front();
  guardedCall([&] { onCodeDetected(*code.stringValue, pravikDisplayName(code.type)); });
}

void CameraManager::toggleTorch() {
  setTorch(device().get(), !isTorchOn());
}

void CameraManager::turnOffTorch() {
  setTorch(device().get(), false);
}

bool CameraManager::isTorchOn() const {
  const std::shared_ptr<CaptureDevice> camera = device();
  return camera && camera->hasTorch() && camera->isTorchOn();
}

void CameraManager::lockExposureToPoint(Point point) {
  const std::shared_ptr<CaptureDevice> camera = device();
  if (!camera || !camera->supportsExposurePointOfInterest() || !camera->supportsContinuousAutoExposure()) return;
  const ConfigurationLock lock(*camera);
  if (!lock.isHeld()) {
    OCRLogger::debug([&] { return "曝光点锁定失败: " + lock.failure(); });
    return;
  }
  camera->setExposurePointOfInterest({std::clamp(point.x, 0.0, 1.0), std::clamp(point.y, 0.0, 1.0)});
  camera->setContinuousAutoExposure();
}

std::shared_ptr<CaptureDevice> CameraManager::device() const {
  return captureSystem_ ? captureSystem_->backCamera() : nullptr;
}

}  // namespace pravik
