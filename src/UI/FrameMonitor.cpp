#include "UI/FrameMonitor.h"

namespace pravik {
namespace {

constexpr std::int64_t qualitySampleInterval = 10;

}  // namespace

std::optional<FrameQuality> FrameMonitor::process(const VideoFrame& frame) {
  if (isRecognizing) return std::nullopt;
  detector_->processFrame(frame);
  if (++frameQualitySampleCount_ % qualitySampleInterval != 0) return std::nullopt;
  const FrameQuality quality = FrameQuality::analyze(frame);
  const std::lock_guard lock(mutex_);
  recentFrameQuality_ = quality;
  return quality;
}

FrameQuality FrameMonitor::recentFrameQuality() const {
  const std::lock_guard lock(mutex_);
  return recentFrameQuality_;
}

void FrameMonitor::resetQuality() {
  const std::lock_guard lock(mutex_);
  recentFrameQuality_ = {};
  frameQualitySampleCount_ = 0;
}

}  // namespace pravik
