#include "backends/opencv/camera/OpenCvCaptureSession.h"

#include <utility>

#include "Records/CodeType.h"

namespace pravik {

OpenCvCaptureSession::OpenCvCaptureSession(const OpenCvCameraOptions& options)
    : flow_(std::make_shared<FrameFlow>(options.source, options.loops, options.pacer, options.onEnd)),
      barcodeDetector_(options.barcodeDetector),
      hasPreview_(options.hasPreview) {}

OpenCvCaptureSession::~OpenCvCaptureSession() {
  flow_->stop();
}

void OpenCvCaptureSession::addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) {
  flow_->setQueue(std::move(queue));
  flow_->onFrame = std::move(handler);
}

void OpenCvCaptureSession::addMetadataOutput(std::shared_ptr<SerialQueue> queue, MetadataHandler handler) {
  if (barcodeDetector_)
    flow_->codes = std::make_unique<FrameCodes>(barcodeDetector_, std::move(queue), std::move(handler));
}

bool OpenCvCaptureSession::isRunning() const {
  return flow_->isRunning();
}

void OpenCvCaptureSession::startRunning() {
  flow_->start();
}

void OpenCvCaptureSession::stopRunning() {
  flow_->stop();
}

void OpenCvCaptureSession::capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) {
  CapturedPhoto photo;
  if (const std::optional<Bitmap> newest = flow_->newestFrame())
    photo.image = Image{.bitmap = newest};
  else
    photo.error = "the camera has sent no picture";
  handler(std::move(photo));
}

std::vector<MetadataObjectType> OpenCvCaptureSession::availableMetadataObjectTypes() const {
  std::vector<MetadataObjectType> types;
  if (flow_->codes)
    for (const CodeType& type : codeTypes) types.push_back({std::string(type.metadataObjectType)});
  return types;
}

void OpenCvCaptureSession::setMetadataObjectTypes(const std::vector<MetadataObjectType>& types) {
  if (flow_->codes) flow_->codes->setTypes(types);
}

std::optional<Bitmap> OpenCvCaptureSession::previewPicture() const {
  return hasPreview_ ? flow_->newestFrame() : std::nullopt;
}

}  // namespace pravik
