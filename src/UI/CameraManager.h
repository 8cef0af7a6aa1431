#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CaptureSystem.h"
#include "Platform/Dispatch.h"
#include "Platform/PreviewView.h"

namespace pravik {

/// The camera of a scanner: one session with video frames, still photos and code metadata, and its preview. Work on the
/// session runs on one serial queue, where the callbacks come too (photos: on the camera's own thread); torch and
/// exposure act at once. Nothing here fails loudly: without a camera, photos are absent and the rest does nothing.
class CameraManager : public std::enable_shared_from_this<CameraManager> {
 public:
  CameraManager(std::shared_ptr<CaptureSystem> captureSystem, std::shared_ptr<Dispatch> dispatch);
  /// Stops the session.
  ~CameraManager();
  CameraManager(const CameraManager&) = delete;
  CameraManager& operator=(const CameraManager&) = delete;

  // The callbacks; set before the camera is started. What they throw is logged.
  std::function<void(const VideoFrame&)> onVideoFrame;
  /// Told the photo, or nothing when there is none.
  std::function<void(std::optional<Image>)> onPhotoCaptured;
  /// Told what a code says and the display name of its type.
  std::function<void(const std::string& payload, const std::string& typeName)> onCodeDetected;

  /// Sets the session up with the camera at the back; once is enough.
  void configure() { onSessionQueue(&CameraManager::configureSession); }
  void start() { onSessionQueue(&CameraManager::startSession); }
  void stop() { onSessionQueue(&CameraManager::stopSession); }
  /// Takes a still; onPhotoCaptured gets nothing when the camera does not run.
  void capturePhoto() { onSessionQueue(&CameraManager::takePhoto); }
  /// Looks for those of the types that the camera can read; when it can read none, nothing changes.
  void setCodeTypes(std::vector<MetadataObjectType> types);

  void toggleTorch();
  void turnOffTorch();
  bool isTorchOn() const;
  /// Measures the light at a point: 0...1 in both directions of the unturned picture, origin at the top left; clamped.
  void lockExposureToPoint(Point point);

  /// Shows what the camera sees.
  const std::shared_ptr<PreviewView>& previewLayer() const { return previewLayer_; }

 private:
  void onSessionQueue(void (CameraManager::*work)());
  void configureSession();
  void startSession();
  void stopSession();
  void takePhoto();
  void applyCodeTypes(const std::vector<MetadataObjectType>& types);
  void addOutputs();
  void deliverPhoto(const CapturedPhoto& photo) const;
  void deliverCode(const std::vector<MetadataObject>& objects) const;
  std::shared_ptr<CaptureDevice> device() const;

  std::shared_ptr<CaptureSystem> captureSystem_;
  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<SerialQueue> sessionQueue_;
  std::shared_ptr<CaptureSession> session_;
  std::shared_ptr<PreviewView> previewLayer_ = std::make_shared<PreviewView>();
  /// Touched on the session queue only.
  bool isConfigured_ = false;
};

}  // namespace pravik
