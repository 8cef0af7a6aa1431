#include "support/StillCamera.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace pravik::test {
/// What is before the camera.
struct StillCamera::Scene {
  mutable std::mutex mutex;
  Bitmap picture;
  std::optional<MetadataObject> code;

  explicit Scene(Bitmap first) : picture(std::move(first)) {}

  Bitmap look() const {
    const std::lock_guard lock(mutex);
    return picture;
  }
};

class StillCamera::Session : public CaptureSession, public std::enable_shared_from_this<Session> {
 public:
  Session(std::shared_ptr<Dispatch> dispatch, std::shared_ptr<Scene> scene, std::chrono::milliseconds frameTime,
          std::chrono::milliseconds photoDelay)
      : dispatch_(std::move(dispatch)), scene_(std::move(scene)), frameTime_(frameTime), photoDelay_(photoDelay) {}

  void beginConfiguration() override {}
  void commitConfiguration() override {}
  void usePhotoPreset() override {}
  bool canAddInput(const CaptureDevice& /*device*/) const override { return true; }
  void addInput(std::shared_ptr<CaptureDevice> /*device*/) override {}
  void addVideoOutput(std::shared_ptr<SerialQueue> queue, FrameHandler handler) override {
    queue_ = std::move(queue);
    frames_ = std::move(handler);
  }
  void addPhotoOutput() override {}
  void addMetadataOutput(std::shared_ptr<SerialQueue> /*queue*/, MetadataHandler handler) override {
    metadata_ = std::move(handler);
  }
  bool isRunning() const override { return run_ != 0; }
  void startRunning() override { filmLater(run_ = ++runs_); }
  void stopRunning() override { run_ = 0; }
  bool supportsAutomaticFlash() const override { return false; }
  void capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) override {
    dispatch_->asyncAfter(photoDelay_, [weak = weak_from_this(), handler = std::move(handler)] {
      if (const auto session = weak.lock())
        session->queue_->async(
            [handler, picture = session->scene_->look()] { handler({Image{.bitmap = picture}, std::nullopt}); });
    });
  }
  std::vector<MetadataObjectType> availableMetadataObjectTypes() const override {
    return {{"AVMetadataObjectTypeQRCode"}};
  }
  void setMetadataObjectTypes(const std::vector<MetadataObjectType>& /*types*/) override {}
  std::optional<Bitmap> previewPicture() const override {
    return runs_ > 0 ? std::optional(scene_->look()) : std::nullopt;
  }

 private:
  void filmLater(int run) {
    dispatch_->asyncAfter(frameTime_, [weak = weak_from_this(), run] {
      const auto session = weak.lock();
      if (!session || session->run_ != run) return;
      session->queue_->async([weak, run] {
        if (const auto filming = weak.lock()) filming->film(run);
      });
    });
  }

  void film(int run) {
    if (run_ != run) return;
    if (frames_) frames_({scene_->look()});
    std::optional<MetadataObject> code;
    {
      const std::lock_guard lock(scene_->mutex);
      code = scene_->code;
    }
    if (code && metadata_) metadata_({*code});
    filmLater(run);
  }

  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<Scene> scene_;
  std::chrono::milliseconds frameTime_;
  std::chrono::milliseconds photoDelay_;
  std::shared_ptr<SerialQueue> queue_;
  FrameHandler frames_;
  MetadataHandler metadata_;
  /// Counts the starts; `run_` is 0 while nothing is filmed.
  std::atomic<int> runs_ = 0;
  std::atomic<int> run_ = 0;
};

StillCamera::StillCamera(std::shared_ptr<Dispatch> dispatch, Bitmap picture)
    : dispatch_(std::move(dispatch)), scene_(std::make_shared<Scene>(std::move(picture))) {}

void StillCamera::setPicture(Bitmap picture) {
  const std::lock_guard lock(scene_->mutex);
  scene_->picture = std::move(picture);
}

void StillCamera::setCode(std::optional<MetadataObject> code) {
  const std::lock_guard lock(scene_->mutex);
  scene_->code = std::move(code);
}

std::shared_ptr<CaptureSession> StillCamera::makeSession() {
  return std::make_shared<Session>(dispatch_, scene_, frameTime, photoDelay);
}

}  // namespace pravik::test
