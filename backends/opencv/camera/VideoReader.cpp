#include "backends/opencv/camera/VideoReader.h"

#include <cmath>
#include <cstdlib>
#include <mutex>
#include <opencv2/core/utils/logger.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "Platform/ImageCodec.h"
#include "backends/opencv/Mat.h"

namespace pravik {
namespace {

/// The rate of a source that tells none, or one that cannot be.
constexpr double usualRate = 30, maximumRate = 1000;
/// More than any camera has: the driver gives the largest size it knows.
constexpr int largestSide = 16'000;

/// The libraries would write their own complaints to standard error; what they mean is in the errors thrown here.
void silenceLibraries() {
  static std::once_flag once;
  std::call_once(once, [] {
    ::setenv("OPENCV_FFMPEG_LOGLEVEL", "-8", 0);
    if (std::getenv("OPENCV_LOG_LEVEL") == nullptr)
      cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  });
}

bool isAllowedSize(double width, double height) {
  return width * height <= static_cast<double>(maximumPicturePixels);
}

}  // namespace

VideoReader::VideoReader(VideoSource source) : source_(std::move(source)) {
  if (const std::string problem = problemWith(source_); !problem.empty()) throw std::runtime_error(problem);
  silenceLibraries();
  open();
}

void VideoReader::open() {
  hasGrabbed_ = false;
  // An absolute path cannot be taken for an address on the network.
  const std::string path = std::filesystem::absolute(source_.path).string();
  if (!capture_.open(path, source_.isCamera ? cv::CAP_V4L2 : cv::CAP_FFMPEG))
    throw std::runtime_error(source_.isCamera ? "in use by another program, or without pictures"
                                              : "not a video, or damaged");
  if (source_.isCamera) {
    capture_.set(cv::CAP_PROP_FOURCC, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'));
    capture_.set(cv::CAP_PROP_FRAME_WIDTH, largestSide);
    capture_.set(cv::CAP_PROP_FRAME_HEIGHT, largestSide);
  }
  const Size size = frameSize();
  if (!isAllowedSize(size.width, size.height)) throw std::runtime_error("the pictures are too large");
  const double rate = capture_.get(cv::CAP_PROP_FPS);
  framesPerSecond_ = rate > 0 && rate <= maximumRate ? rate : usualRate;
}

Size VideoReader::frameSize() const {
  return {capture_.get(cv::CAP_PROP_FRAME_WIDTH), capture_.get(cv::CAP_PROP_FRAME_HEIGHT)};
}

std::chrono::milliseconds VideoReader::timeOfFrame(std::int64_t index) const {
  return std::chrono::milliseconds(std::llround(static_cast<double>(index) * 1000 / framesPerSecond_));
}

bool VideoReader::grab() {
  if (!capture_.grab()) return false;
  hasGrabbed_ = true;
  return true;
}

std::optional<Bitmap> VideoReader::retrieve() {
  try {
    cv::Mat frame;
    if (!capture_.retrieve(frame) || frame.empty() || frame.depth() != CV_8U) return std::nullopt;
    if (!isAllowedSize(frame.cols, frame.rows)) return std::nullopt;
    return toBitmap(frame.channels() == 4 ? frame.clone() : asBgra(frame));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

bool VideoReader::rewind() {
  if (!hasGrabbed_) return false;
  open();
  return true;
}

}  // namespace pravik
