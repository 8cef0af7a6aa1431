#pragma once

#include <memory>
#include <vector>

#include "Platform/CaptureSession.h"
#include "backends/opencv/camera/FrameFlow.h"
#include "backends/opencv/camera/OpenCvCaptureSystem.h"

namespace pravik {

/// The frames of a camera or a video file as a capture session. A camera's own flash is not used.
class OpenCvCaptureSession final : public CaptureSession {
 public:
  explicit OpenCvCaptureSession(const OpenCvCameraOptions& options);
  ~OpenCvCaptureSession() override;
  OpenCvCaptureSession(const OpenCvCaptureSession&) = delete;
  OpenCvCaptureSession& operator=(const OpenCvCaptureSession&) = delete;
  OpenCvCaptureSession(OpenCvCaptureSession&&) = delete;
  OpenCvCaptureSession& operator=(OpenCvCaptureSession&&) = delete;

  void beginConfiguration() override {}
  void commitConfiguration() override {}
  void usePhotoPreset() override {}
  bool canAddInput(const CaptureDevice& /*device*/) const override { return true; }
  void addInput(std::shared_ptr<CaptureDevice> /*device*/) override {}
  void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) override;
  void addPhotoOutput() override {}
  void addMetadataOutput(std::shared_ptr<SerialQueue> queue, MetadataHandler handler) override;

  bool isRunning() const override;
  void startRunning() override;
  void stopRunning() override;

  bool supportsAutomaticFlash() const override { return false; }
  void capturePhoto(bool automaticFlash, PhotoHandler handler) override;

  std::vector<MetadataObjectType> availableMetadataObjectTypes() const override;
  void setMetadataObjectTypes(const std::vector<MetadataObjectType>& types) override;

  std::optional<Bitmap> previewPicture() const override;

 private:
  std::shared_ptr<FrameFlow> flow_;
  std::shared_ptr<const BarcodeDetector> barcodeDetector_;
  bool hasPreview_;
};

}  // namespace pravik
