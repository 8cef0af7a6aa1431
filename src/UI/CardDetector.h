#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Platform/Dispatch.h"
#include "Platform/Geometry.h"
#include "Platform/RectangleDetector.h"
#include "Platform/VideoFrame.h"

namespace pravik {

/// Watches live frames for the outline of a card, and tells when the card has been held still long enough for a photo.
///
/// Outlines are normalised to 0...1 in both directions of the unturned frame, origin at the lower left. Both callbacks
/// come on the main queue, in the order in which they were produced, and not once the detector is gone. Frames may
/// arrive on one thread while another resets; settings and callbacks are set before the first frame.
class CardDetector : public std::enable_shared_from_this<CardDetector> {
 public:
  /// Without a rectangle detector every analysed frame counts as one without an outline.
  CardDetector(std::shared_ptr<const RectangleDetector> rectangleDetector, std::shared_ptr<Dispatch> dispatch);

  /// Consecutive outlines that must overlap.
  std::int64_t requiredStableFrames = 8;
  /// An outline is still when its intersection over union with the one before is greater than this.
  double iouThreshold = 0.8;
  /// Only every so-manieth frame is analysed; must not be 0.
  std::int64_t frameSkipInterval = 3;

  /// Told the outline of each analysed frame, or nothing when it shows no card.
  std::function<void(std::optional<Rect>)> onRectangleDetected;
  /// Told once when the card is still, and not again until a reset.
  std::function<void()> onCardStable;

  /// Takes the next frame and, when it is due, looks for the outline before it returns.
  void processFrame(const VideoFrame& frame);
  /// Forgets all frames, and tells at once, on the calling thread, that there is no outline.
  void reset();

 private:
  /// What the frames since the last reset have brought.
  struct Run {
    std::int64_t frameCount = 0;
    /// The outline of the last analysed frame, if it had one.
    std::optional<Rect> lastRect;
    /// Overlapping outlines in a row.
    std::int64_t stableCount = 0;
    /// A search for rectangles is under way.
    bool isProcessing = false;
    bool hasTriggered = false;
  };

  bool beginsProcessing();
  void endProcessing();
  void detectRectangle(const Bitmap& bitmap);
  void handleDetection(const Rect& rect);
  void handleNoDetection();
  void reportOnMain(std::optional<Rect> rect);
  void reportStableOnMain();

  std::shared_ptr<const RectangleDetector> rectangleDetector_;
  std::shared_ptr<Dispatch> dispatch_;
  std::mutex mutex_;
  /// Guarded by the mutex.
  Run run_;
};

/// Intersection over union of two rectangles; 0 when they do not overlap.
double iou(const Rect& a, const Rect& b);

}  // namespace pravik
