#include "backends/opencv/camera/FrameFlow.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <string>
#include <utility>

#include "Records/CodeType.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Codes are looked for on every so-manieth frame, which at 30 frames a second nobody notices.
constexpr std::int64_t frameInterval = 3;
/// Many times what any frame needs that shows a code; one full of patterns must not hold up the next ones for long.
constexpr std::chrono::seconds searchTime{2};

}  // namespace

FrameCodes::FrameCodes(std::shared_ptr<const BarcodeDetector> detector, std::shared_ptr<SerialQueue> queue,
                       CaptureSession::MetadataHandler handler)
    : detector_(std::move(detector)), queue_(std::move(queue)), handler_(std::move(handler)) {}

void FrameCodes::setTypes(const std::vector<MetadataObjectType>& types) {
  symbologies_.clear();
  for (const MetadataObjectType& type : types) {
    const auto* known = std::ranges::find(codeTypes, type.rawValue, &CodeType::metadataObjectType);
    if (known != codeTypes.end()) symbologies_.push_back({std::string(known->symbology)});
  }
}

void FrameCodes::process(const Bitmap& frame) {
  if (symbologies_.empty() || ++frameCount_ % frameInterval != 0) return;
  std::vector<MetadataObject> objects;
  try {
    const WorkLimit limit{.deadline = std::chrono::steady_clock::now() + searchTime, .stop = {}};
    for (const BarcodeObservation& code : detector_->detect(frame, symbologies_, limit)) {
      const auto* known = std::ranges::find(codeTypes, code.symbology.rawValue, &CodeType::symbology);
      if (known != codeTypes.end()) objects.push_back({{std::string(known->metadataObjectType)}, code.payload});
    }
  } catch (const std::exception& error) {
    OCRLogger::debug([&] { return std::string("码检测失败: ") + error.what(); });
    return;
  }
  if (!objects.empty()) queue_->async([handler = handler_, objects = std::move(objects)] { handler(objects); });
}

FrameFlow::FrameFlow(VideoSource source, bool loops, std::shared_ptr<Dispatch> pacer,
                     std::function<void(const std::string&)> onEnd)
    : source_(std::move(source)), loops_(loops), pacer_(std::move(pacer)), onEnd_(std::move(onEnd)) {}

void FrameFlow::start() {
  if (isRunning_ || !queue_) return;
  // The thread of a flow that ended by itself.
  if (thread_.joinable()) thread_.join();
  if (!open()) return;
  isRunning_ = true;
  ++run_;
  if (pacer_ && !source_.isCamera) return step(run_, 0);
  isBusy_ = false;
  thread_ = std::jthread([this](const std::stop_token& stop) { pump(stop); });
}

void FrameFlow::stop() {
  isRunning_ = false;
  thread_ = {};
  if (!source_.isCamera) return;
  // Others may use the camera meanwhile, and it would go on with the frames that it had when it was stopped.
  reader_.reset();
  const std::lock_guard lock(mutex_);
  newest_.reset();
}

std::optional<Bitmap> FrameFlow::newestFrame() const {
  const std::lock_guard lock(mutex_);
  return newest_;
}

bool FrameFlow::open() {
  if (reader_) return true;
  try {
    reader_ = std::make_unique<VideoReader>(source_);
  } catch (const std::exception& error) {
    if (onEnd_) onEnd_(error.what());
    return false;
  }
  return true;
}

/// Goes on to the next frame, over the end of a file that loops.
bool FrameFlow::advance() {
  try {
    return reader_->grab() || (loops_ && reader_->rewind() && reader_->grab());
  } catch (const std::exception&) {
    return false;
  }
}

std::string FrameFlow::endReason() const {
  if (source_.isCamera) return "the camera has gone";
  return newestFrame() ? "the video has ended" : "the video has no pictures";
}

void FrameFlow::end(const std::string& reason) {
  reader_.reset();
  isRunning_ = false;
  if (onEnd_) onEnd_(reason);
}

std::optional<Bitmap> FrameFlow::takeFrame() {
  std::optional<Bitmap> pixels = reader_->retrieve();
  if (!pixels) return pixels;
  const std::lock_guard lock(mutex_);
  newest_ = pixels;
  return pixels;
}

void FrameFlow::deliver(const std::optional<Bitmap>& pixels) {
  if (!isRunning_) return;
  if (onFrame) onFrame({pixels});
  if (codes && pixels) codes->process(*pixels);
}

/// One frame on the pacer's time; runs on the queue.
void FrameFlow::step(std::int64_t run, std::int64_t index) {
  if (!isRunning_ || run != run_) return;
  if (!advance()) return end(endReason());
  deliver(takeFrame());
  const auto interval = reader_->timeOfFrame(index + 1) - reader_->timeOfFrame(index);
  pacer_->asyncAfter(interval, [weak = weak_from_this(), queue = queue_, run, index] {
    queue->async([weak, run, index] {
      if (const auto flow = weak.lock()) flow->step(run, index + 1);
    });
  });
}

/// All frames on the clock's time; runs on the thread.
void FrameFlow::pump(const std::stop_token& stop) {
  const auto begin = std::chrono::steady_clock::now();
  for (std::int64_t index = 0; !stop.stop_requested(); ++index) {
    if (!source_.isCamera && !waitForFrame(begin + reader_->timeOfFrame(index), stop)) return;
    if (!advance()) return end(endReason());
    // A late frame is still shown by a preview.
    const std::optional<Bitmap> frame = takeFrame();
    if (isBusy_.exchange(true)) continue;
    queue_->async([weak = weak_from_this(), pixels = frame] {
      const auto flow = weak.lock();
      if (!flow) return;
      flow->deliver(pixels);
      flow->isBusy_ = false;
    });
  }
}

/// Waits until a frame is due; false when the flow is stopped before.
bool FrameFlow::waitForFrame(std::chrono::steady_clock::time_point time, const std::stop_token& stop) {
  std::mutex mutex;
  std::condition_variable_any timer;
  std::unique_lock lock(mutex);
  timer.wait_until(lock, stop, time, [] { return false; });
  return !stop.stop_requested();
}

}  // namespace pravik
