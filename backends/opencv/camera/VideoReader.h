#pragma once

#include <chrono>
#include <cstdint>
#include <opencv2/videoio.hpp>
#include <optional>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "backends/opencv/camera/VideoSource.h"

namespace pravik {

/// Reads a video file or a camera frame by frame. Files are read by FFmpeg, cameras by Video4Linux at their largest
/// size, as motion JPEG where they offer it. One thread at a time.
class VideoReader {
 public:
  /// Throws std::runtime_error with a readable text when the source cannot be opened ("not a video, or damaged",
  /// "in use by another program, or without pictures", and what problemWith() says).
  explicit VideoReader(VideoSource source);

  /// What the source says of its frames, in pixels; frames may differ from it.
  Size frameSize() const;
  /// When a frame is due, measured from the first. Frames come at one rate, the average of a file whose rate varies.
  std::chrono::milliseconds timeOfFrame(std::int64_t index) const;

  /// Goes on to the next frame; false after the last one of a file, and when a camera has gone.
  bool grab();
  /// The frame that was grabbed, as BGRA; absent when it cannot be decoded.
  std::optional<Bitmap> retrieve();
  /// Begins a file anew. False when no frame was read since it last began, for then there is none.
  bool rewind();

 private:
  void open();

  VideoSource source_;
  cv::VideoCapture capture_;
  double framesPerSecond_ = 0;
  bool hasGrabbed_ = false;
};

}  // namespace pravik
