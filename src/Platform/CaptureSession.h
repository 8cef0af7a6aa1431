#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/CaptureDevice.h"
#include "Platform/Dispatch.h"
#include "Platform/Image.h"
#include "Platform/MetadataObjectType.h"
#include "Platform/VideoFrame.h"

namespace pravik {

/// What became of a still photo.
struct CapturedPhoto {
  /// Absent when the photo failed or its data is no picture.
  std::optional<Image> image;
  /// Why the camera failed, in words a user can read; absent when it took the photo.
  std::optional<std::string> error;
};

/// Something that a live camera recognised by itself.
struct MetadataObject {
  MetadataObjectType type;
  /// What a machine-readable code says, as UTF-8; absent when it cannot be decoded, or when this is no code.
  std::optional<std::string> stringValue;
};

/// The flow of pictures out of one camera. All members but previewPicture() are called on one serial queue, which is
/// also where the session is stopped and usually destroyed; it calls no handler once it is gone. Nothing is thrown: a
/// camera that cannot start does not run.
class CaptureSession {
 public:
  using FrameHandler = std::function<void(const VideoFrame&)>;
  using PhotoHandler = std::function<void(CapturedPhoto)>;
  using MetadataHandler = std::function<void(const std::vector<MetadataObject>&)>;

  virtual ~CaptureSession() = default;

  /// What is set up between the two takes effect as a whole with the commit. A running session may be set up too.
  virtual void beginConfiguration() = 0;
  virtual void commitConfiguration() = 0;

  /// Asks for the quality of still photos rather than that of video.
  virtual void usePhotoPreset() = 0;
  virtual bool canAddInput(const CaptureDevice& device) const = 0;
  virtual void addInput(std::shared_ptr<CaptureDevice> device) = 0;

  /// Adds an output if the session accepts one, else does nothing. Video frames are BGRA at the camera's rate, and a
  /// frame that comes while the queue is still busy with the one before is dropped. Handlers run on `queue`.
  virtual void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) = 0;
  virtual void addPhotoOutput() = 0;
  virtual void addMetadataOutput(std::shared_ptr<SerialQueue> queue, MetadataHandler handler) = 0;

  /// Whether pictures flow; false again when the camera has gone or its video has ended.
  virtual bool isRunning() const = 0;
  virtual void startRunning() = 0;
  virtual void stopRunning() = 0;

  virtual bool supportsAutomaticFlash() const = 0;
  /// Takes a still at full resolution that shows what the video shows. The handler is called exactly once, on any
  /// thread, unless the session is destroyed before.
  virtual void capturePhoto(bool automaticFlash, PhotoHandler handler) = 0;

  /// The code types that the metadata output can look for; empty without such an output.
  virtual std::vector<MetadataObjectType> availableMetadataObjectTypes() const = 0;
  /// Looks for these types from now on and for no others.
  virtual void setMetadataObjectTypes(const std::vector<MetadataObjectType>& types) = 0;

  /// The newest video frame for a preview to show; absent before the first. May be called from any thread.
  virtual std::optional<Bitmap> previewPicture() const = 0;
};

}  // namespace pravik
