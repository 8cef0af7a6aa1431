#include "UI/CardDetector.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Wider than for a photo: a card that is still coming into view should be followed too.
constexpr RectangleRequest outlineRequest{.maximumObservations = 5,
                                          .minimumAspectRatio = 0.5F,
                                          .maximumAspectRatio = 4.0F,
                                          .quadratureTolerance = 40,
                                          .minimumSize = 0.1F,
                                          .minimumConfidence = 0.1F};

}  // namespace

CardDetector::CardDetector(std::shared_ptr<const RectangleDetector> rectangleDetector,
                           std::shared_ptr<Dispatch> dispatch)
    : rectangleDetector_(std::move(rectangleDetector)), dispatch_(std::move(dispatch)) {}

void CardDetector::processFrame(const VideoFrame& frame) {
  if (!beginsProcessing()) return;
  if (frame.pixels) detectRectangle(*frame.pixels);
  endProcessing();
}

void CardDetector::reset() {
  {
    const std::lock_guard lock(mutex_);
    run_ = {};
  }
  if (onRectangleDetected) onRectangleDetected(std::nullopt);
}

bool CardDetector::beginsProcessing() {
  if (frameSkipInterval == 0) std::abort();
  const std::lock_guard lock(mutex_);
  ++run_.frameCount;
  if (run_.frameCount % frameSkipInterval != 0 || run_.isProcessing) return false;
  run_.isProcessing = true;
  return true;
}

void CardDetector::endProcessing() {
  const std::lock_guard lock(mutex_);
  run_.isProcessing = false;
}

void CardDetector::detectRectangle(const Bitmap& bitmap) {
  if (!rectangleDetector_) {
    OCRLogger::debug([] { return std::string("矩形检测错误: no rectangle detector is available"); });
    handleNoDetection();
    return;
  }
  std::vector<RectangleObservation> found;
  try {
    found = rectangleDetector_->detect(bitmap, outlineRequest);
  } catch (const std::exception& error) {
    OCRLogger::debug([&] { return std::string("矩形检测失败: ") + error.what(); });
    return;
  }
  const auto largest = std::ranges::max_element(
      found, {}, [](const RectangleObservation& rectangle) { return rectangle.boundingBox.area(); });
  if (largest == found.end()) {
    handleNoDetection();
  } else {
    handleDetection(largest->boundingBox);
  }
}

void CardDetector::handleDetection(const Rect& rect) {
  reportOnMain(rect);
  const std::lock_guard lock(mutex_);
  const bool isStill = run_.lastRect && iouThreshold < iou(*run_.lastRect, rect);
  run_.stableCount = isStill ? run_.stableCount + 1 : 1;
  run_.lastRect = rect;
  if (!isStill || run_.stableCount < requiredStableFrames || run_.hasTriggered) return;
  run_.hasTriggered = true;
  reportStableOnMain();
}

void CardDetector::handleNoDetection() {
  {
    const std::lock_guard lock(mutex_);
    run_.stableCount = 0;
    run_.lastRect.reset();
  }
  reportOnMain(std::nullopt);
}

void CardDetector::reportOnMain(std::optional<Rect> rect) {
  dispatch_->async([weak = weak_from_this(), rect] {
    const auto detector = weak.lock();
    if (detector && detector->onRectangleDetected) detector->onRectangleDetected(rect);
  });
}

void CardDetector::reportStableOnMain() {
  dispatch_->async([weak = weak_from_this()] {
    const auto detector = weak.lock();
    if (detector && detector->onCardStable) detector->onCardStable();
  });
}

double iou(const Rect& a, const Rect& b) {
  const double shared = intersection(a, b).area();
  const double together = a.area() + b.area() - shared;
  return together > 0 ? shared / together : 0;
}

}  // namespace pravik
