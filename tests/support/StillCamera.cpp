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

class StillCamera::Session : public FakeCaptureSession, public std::enable_shared_from_this<Session> {
 public:
  Session(std::shared_ptr<Dispatch> dispatch, std::shared_ptr<Scene> scene, std::chrono::milliseconds frameTime,
          std::chrono::milliseconds photoDelay)
      : dispatch_(std::move(dispatch)), scene_(std::move(scene)), frameTime_(frameTime), photoDelay_(photoDelay) {
    offeredTypes = {{"AVMetadataObjectTypeQRCode"}};
  }

  bool isRunning() const override { return run_ != 0; }
  void startRunning() override { filmLater(run_ = ++runs_); }
  void stopRunning() override { run_ = 0; }
  void capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) override {
    dispatch_->asyncAfter(photoDelay_, [weak = weak_from_this(), handler = std::move(handler)] {
      if (const auto session = weak.lock())
        session->frameQueue_->async(
            [handler, picture = session->scene_->look()] { handler({Image{.bitmap = picture}, std::nullopt}); });
    });
  }
  std::optional<Bitmap> previewPicture() const override {
    return runs_ > 0 ? std::optional(scene_->look()) : std::nullopt;
  }

 private:
  void filmLater(int run) {
    dispatch_->asyncAfter(frameTime_, [weak = weak_from_this(), run] {
      const auto session = weak.lock();
      if (!session || session->run_ != run) return;
      session->frameQueue_->async([weak, run] {
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
