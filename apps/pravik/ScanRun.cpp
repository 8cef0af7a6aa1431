#include "apps/pravik/ScanRun.h"

#include <algorithm>
#include <future>
#include <utility>

#include "Pravik.h"
#include "Utils/Format.h"
#include "backends/opencv/camera/OpenCvCaptureSystem.h"

namespace pravik::cli {
namespace {

using std::chrono::milliseconds;

/// A screen of a phone's height, in points, and no wider than leaves room for the buttons below the cut-out.
constexpr double screenHeight = 844, widestScreen = 0.75;
/// How often a scan that is to end looks whether the photo that it was reading is done.
constexpr milliseconds settlingInterval{50};
/// How soon somebody who interrupts is heard.
constexpr milliseconds interruptionInterval{100};

Size screenSize(const Size& frame) {
  const double shape = frame.height > 0 ? frame.width / frame.height : widestScreen;
  return {screenHeight * std::min(shape, widestScreen), screenHeight};
}

ScanWatch::Clock clockOf(const std::shared_ptr<ManualDispatch>& pacer) {
  if (pacer) return [pacer] { return pacer->now(); };
  return [begin = std::chrono::steady_clock::now()] {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
  };
}

/// Runs work on a queue and waits for it.
template <class Queue, class Work>
void runAndWait(Queue& queue, const Work& work) {
  std::promise<void> done;
  queue.async([&] {
    work();
    done.set_value();
  });
  done.get_future().wait();
}

Answer noRecord(const std::string& reason) {
  return {{"error", {{"code", "no_record"}, {"message", reason}}}};
}

}  // namespace

ScanRun::ScanRun(ScanOptions options, std::shared_ptr<Dispatch> dispatch, const Size& frame, ScanEventWriter& writer)
    : options_(std::move(options)),
      writer_(writer),
      dispatch_(std::move(dispatch)),
      pacer_(std::dynamic_pointer_cast<ManualDispatch>(dispatch_)) {
  const auto tell = [this](const Json& event) {
    if (!isFinished()) writer_.write(event);
  };
  watch_ = std::make_shared<ScanWatch>(clockOf(pacer_), tell, options_.tapsManualCapture);
  observed_ = std::make_shared<ObservedDispatch>(dispatch_, watch_);
  stage_ = std::make_shared<HeadlessStage>(dispatch_, screenSize(frame));
  report_ = std::make_shared<ScannerListener>([this](const ScannerReport& report) {
    finish(report.record ? recordAnswer(*report.record) : answerOf(report.record.error()));
  });
}

bool ScanRun::run(Platform platform, const std::function<bool()>& isStopped) {
  platform.captureSystem = makeCamera(platform);
  platform.dispatch = observed_;
  platform.stage = stage_;
  screen_ = std::make_shared<OCRScannerViewController>(options_.kind->mode, false, PravikSDK(platform), platform);
  screen_->delegate = report_;
  watch_->watch(screen_);
  observed_->async([this] {
    if (screen_) stage_->present(screen_, true, {});
  });
  if (options_.timeout)
    dispatch_->asyncAfter(*options_.timeout, [weak = weak_from_this()] {
      if (const auto scan = weak.lock())
        scan->endWithoutRecord(
            formatted("no record within {} seconds", std::chrono::duration<double>(*scan->options_.timeout).count()));
    });
  pacer_ ? runOnStreamTime(isStopped) : runInRealTime(isStopped);
  return !answer_.is_null();
}

std::shared_ptr<CaptureSystem> ScanRun::makeCamera(const Platform& platform) {
  auto end = [weak = weak_from_this(), main = std::weak_ptr(dispatch_)](const std::string& reason) {
    if (const auto queue = main.lock())
      queue->async([weak, reason] {
        if (const auto scan = weak.lock()) scan->endWithoutRecord(reason);
      });
  };
  return std::make_shared<OpenCvCaptureSystem>(OpenCvCameraOptions{.source = videoSourceNamed(options_.source),
                                                                   .loops = options_.loops,
                                                                   .pacer = pacer_,
                                                                   .barcodeDetector = platform.barcodeDetector,
                                                                   .hasPreview = options_.cutsToCutout,
                                                                   .onEnd = std::move(end)});
}

void ScanRun::runOnStreamTime(const std::function<bool()>& isStopped) {
  while (!isFinished() && !isStopped() && pacer_->advanceToNextWork()) {
  }
  close();
  pacer_->runAll();
}

void ScanRun::runInRealTime(const std::function<bool()>& isStopped) {
  {
    std::unique_lock lock(mutex_);
    while (!isFinished_ && (!isStopped() || screen_->isRecognizing())) finished_.wait_for(lock, interruptionInterval);
  }
  runAndWait(*dispatch_, [this] { close(); });
  // The camera stops on its queue, which must not outlive the platform's.
  for (const auto& queue : observed_->serialQueues()) runAndWait(*queue, [] {});
}

void ScanRun::close() {
  {
    const std::lock_guard lock(mutex_);
    isFinished_ = true;
  }
  stage_->clear();
  screen_.reset();
}

/// Ends the scan as soon as no photo is being recognised any more: it may yet give a record.
void ScanRun::endWithoutRecord(const std::string& reason) {
  if (isFinished()) return;
  if (!screen_->isRecognizing()) return finish(noRecord(reason));
  dispatch_->asyncAfter(settlingInterval, [weak = weak_from_this(), reason] {
    if (const auto scan = weak.lock()) scan->endWithoutRecord(reason);
  });
}

void ScanRun::finish(const Answer& answer) {
  if (isFinished()) return;
  Json members{{"file", options_.source}, {"kind", options_.kind->commandName}};
  members.update(answer);
  watch_->tell("result", members);
  answer_ = answer;
  const std::lock_guard lock(mutex_);
  isFinished_ = true;
  finished_.notify_all();
}

bool ScanRun::isFinished() const {
  const std::lock_guard lock(mutex_);
  return isFinished_;
}

}  // namespace pravik::cli
