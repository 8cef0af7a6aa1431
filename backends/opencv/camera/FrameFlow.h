#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Platform/BarcodeDetector.h"
#include "Platform/Bitmap.h"
#include "Platform/CaptureSession.h"
#include "Platform/Dispatch.h"
#include "backends/opencv/camera/VideoReader.h"

namespace pravik {

/// Looks for codes on the frames of a video and hands over what it finds. Used on the session's queue only.
class FrameCodes {
 public:
  FrameCodes(std::shared_ptr<const BarcodeDetector> detector, std::shared_ptr<SerialQueue> queue,
             CaptureSession::MetadataHandler handler);

  /// Looks for these types from now on; for none, nothing is looked for.
  void setTypes(const std::vector<MetadataObjectType>& types);
  /// Looks at a frame when it is due; `handler` is called on the queue when there are codes.
  void process(const Bitmap& frame);

 private:
  std::shared_ptr<const BarcodeDetector> detector_;
  std::shared_ptr<SerialQueue> queue_;
  CaptureSession::MetadataHandler handler_;
  std::vector<BarcodeSymbology> symbologies_;
  std::int64_t frameCount_ = 0;
};

/// Brings the frames of a source to a serial queue: by a thread that keeps the clock's time and drops what comes while
/// the queue is busy, or frame by frame on a dispatch's time. All but newestFrame() on that queue, or before the start.
class FrameFlow : public std::enable_shared_from_this<FrameFlow> {
 public:
  /// For the pacer and `onEnd` see OpenCvCameraOptions.
  FrameFlow(VideoSource source, bool loops, std::shared_ptr<Dispatch> pacer,
            std::function<void(const std::string&)> onEnd);

  CaptureSession::FrameHandler onFrame;
  /// Null when nobody asks for codes.
  std::unique_ptr<FrameCodes> codes;

  void setQueue(std::shared_ptr<SerialQueue> queue) { queue_ = std::move(queue); }

  bool isRunning() const { return isRunning_; }
  /// Goes on where it stopped; a file stands still meanwhile.
  void start();
  void stop();

  /// The newest frame that could be decoded; absent before the first. May be called from any thread.
  std::optional<Bitmap> newestFrame() const;

 private:
  bool open();
  bool advance();
  void end(const std::string& reason);
  std::string endReason() const;
  std::optional<Bitmap> takeFrame();
  void deliver(const std::optional<Bitmap>& pixels);

  void step(std::int64_t run, std::int64_t index);
  void pump(const std::stop_token& stop);
  bool waitForFrame(std::chrono::steady_clock::time_point time, const std::stop_token& stop);

  VideoSource source_;
  bool loops_;
  std::shared_ptr<Dispatch> pacer_;
  std::function<void(const std::string&)> onEnd_;
  std::shared_ptr<SerialQueue> queue_;
  std::atomic<bool> isRunning_ = false;
  /// Of the thread while there is one, of the queue otherwise. Null before the first start and after the end.
  std::unique_ptr<VideoReader> reader_;
  /// Counts the starts, so that a step from before a stop is known.
  std::int64_t run_ = 0;
  std::atomic<bool> isBusy_ = false;
  mutable std::mutex mutex_;
  /// Guarded by the mutex.
  std::optional<Bitmap> newest_;
  /// The last member: it ends before what it uses.
  std::jthread thread_;
};

}  // namespace pravik
