#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "Platform/VideoFrame.h"
#include "UI/CardDetector.h"
#include "UI/FrameQuality.h"

namespace pravik {

/// What a scanner's camera thread and its main thread share: the flag that a recognition is under way, the card
/// detector, and the newest frame quality.
class FrameMonitor {
 public:
  explicit FrameMonitor(std::shared_ptr<CardDetector> detector) : detector_(std::move(detector)) {}

  /// A capture or a recognition is under way: frames, codes and triggers are passed over.
  std::atomic<bool> isRecognizing = false;

  /// Follows the card in a frame and measures every 10th frame; gives the measurement when it made one. Does nothing
  /// while recognising. Camera thread.
  std::optional<FrameQuality> process(const VideoFrame& frame);

  /// The newest measurement since the last reset; the neutral record before the first.
  FrameQuality recentFrameQuality() const;
  /// Forgets the measurements and counts the frames anew.
  void resetQuality();

  const std::shared_ptr<CardDetector>& detector() const { return detector_; }

 private:
  std::shared_ptr<CardDetector> detector_;
  std::atomic<std::int64_t> frameQualitySampleCount_ = 0;
  mutable std::mutex mutex_;
  /// Guarded by the mutex.
  FrameQuality recentFrameQuality_;
};

}  // namespace pravik
