#pragma once

#include <atomic>
#include <mutex>
#include <utility>

#include "support/FakeCamera.h"

namespace pravik::test {

/// A camera that films a still picture, which may be exchanged, on the time of a dispatch. The other settings hold for
/// sessions that are made afterwards.
class StillCamera : public FakeCaptureSystem {
 public:
  StillCamera(std::shared_ptr<Dispatch> dispatch, const Bitmap& picture)
      : dispatch_(std::move(dispatch)), scene_(std::make_shared<Scene>(picture)) {}

  /// Between two frames.
  std::chrono::milliseconds frameTime{33};
  /// How long a photo takes.
  std::chrono::milliseconds photoDelay{0};
  /// What is read from the pictures; absent for nothing.
  std::optional<MetadataObject> code;

  void setPicture(const Bitmap& picture) const {
    const std::lock_guard lock(scene_->mutex);
    scene_->picture = picture;
  }
  std::shared_ptr<CaptureSession> makeSession() override;

 private:
  class Session;
  /// What is before the camera; its sessions look from threads of their own.
  struct Scene {
    Bitmap picture;
    std::mutex mutex;

    explicit Scene(Bitmap first) : picture(std::move(first)) {}
  };

  Bitmap look() const {
    const std::lock_guard lock(scene_->mutex);
    return scene_->picture;
  }

  std::shared_ptr<Dispatch> dispatch_;
  std::shared_ptr<Scene> scene_;
};

class StillCamera::Session : public FakeCaptureSession, public std::enable_shared_from_this<Session> {
 public:
  explicit Session(StillCamera camera) : camera_(std::move(camera)) { offeredTypes = {{"AVMetadataObjectTypeQRCode"}}; }

  bool isRunning() const override { return run_ != 0; }
  void startRunning() override { filmLater(run_ = ++runs_); }
  void stopRunning() override { run_ = 0; }
  void capturePhoto(bool /*automaticFlash*/, PhotoHandler handler) override {
    later(camera_.photoDelay, [this, handler] { handler({Image{.bitmap = camera_.look()}, std::nullopt}); });
  }
  std::optional<Bitmap> previewPicture() const override {
    return runs_ > 0 ? std::optional(camera_.look()) : std::nullopt;
  }

 private:
  /// Work of a session that lives on, for its frames' queue.
  void later(std::chrono::milliseconds delay, std::function<void()> work) {
    camera_.dispatch_->asyncAfter(delay, [weak = weak_from_this(), work = std::move(work)] {
      if (const auto session = weak.lock())
        session->frameQueue_->async([weak, work] {
          if (const auto living = weak.lock()) work();
        });
    });
  }
  void filmLater(int run) {
    later(camera_.frameTime, [this, run] {
      if (run_ != run) return;
      if (frames_) frames_({camera_.look()});
      if (camera_.code && metadata_) metadata_({*camera_.code});
      filmLater(run);
    });
  }

  const StillCamera camera_;
  /// Counts the starts; `run_` is 0 while nothing is filmed.
  std::atomic<int> runs_ = 0;
  std::atomic<int> run_ = 0;
};

inline std::shared_ptr<CaptureSession> StillCamera::makeSession() {
  return std::make_shared<Session>(*this);
}

}  // namespace pravik::test
