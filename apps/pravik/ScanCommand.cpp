#include "apps/pravik/ScanCommand.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "Platform/ManualDispatch.h"
#include "Pravik.h"
#include "UI/OCRScannerViewController.h"
#include "Utils/Format.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/HeadlessStage.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/ScanWatch.h"
#include "backends/opencv/camera/OpenCvCaptureSystem.h"
#include "backends/opencv/camera/VideoReader.h"

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

/// One scan: the scanner's screen on a stage without a window, before a camera or a video, until it reports. What
/// happens is written as it happens. To be held by a std::shared_ptr.
class ScanRun : public std::enable_shared_from_this<ScanRun> {
 public:
  /// `dispatch` keeps the time: that of a video file when it is a ManualDispatch, whose clock the scan then moves, else
  /// real time. `frame` is the size of the frames, of no extent when it is not known.
  ScanRun(ScanOptions options, std::shared_ptr<Dispatch> dispatch, const Size& frame, AnswerWriter& writer);

  /// Shows the screen and lets the scan run to its end, or, once it is to stop, to the next moment at which no photo is
  /// being recognised; then takes the screen away. False when it was stopped. Once only, and not on the main queue.
  bool run(Platform platform, const std::function<bool()>& isStopped);

  /// What the scan ended with: {"result":…} or {"error":…}, with the code "no_record" when the video or the time was
  /// over before the screen had anything to report.
  const Answer& answer() const { return answer_; }

 private:
  std::shared_ptr<CaptureSystem> makeCamera(const Platform& platform);
  void runOnStreamTime(const std::function<bool()>& isStopped);
  void runInRealTime(const std::function<bool()>& isStopped);
  void close();
  void endWithoutRecord(const std::string& reason);
  void finish(const Answer& answer);
  bool isFinished() const;

  ScanOptions options_;
  AnswerWriter& writer_;
  std::shared_ptr<Dispatch> dispatch_;
  /// The same when its clock is moved by hand; null in real time.
  std::shared_ptr<ManualDispatch> pacer_;
  std::shared_ptr<ScanWatch> watch_;
  std::shared_ptr<ObservedDispatch> observed_;
  std::shared_ptr<HeadlessStage> stage_;
  std::shared_ptr<OCRScannerViewController> screen_;
  std::shared_ptr<ScannerListener> report_;
  Answer answer_;

  mutable std::mutex mutex_;
  std::condition_variable finished_;
  /// Guarded by the mutex; from then on nothing is written.
  bool isFinished_ = false;
};

ScanRun::ScanRun(ScanOptions options, std::shared_ptr<Dispatch> dispatch, const Size& frame, AnswerWriter& writer)
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
    finish(readingAnswer({report.record, report.record && screen_ ? screen_->lastReport() : ReadingReport{}}));
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

/// The size of a file's frames; nothing is known of a camera's before it runs. Throws with a readable text when there
/// are none to be had.
Size frameSize(const VideoSource& source) {
  if (!source.isCamera) {
    VideoReader reader(source);
    if (!reader.grab()) throw std::runtime_error("the video has no pictures");
    return reader.frameSize();
  }
  // That a camera may not be used is for the screen to say.
  std::error_code error;
  if (std::filesystem::exists(source.path, error) && !mayBeOpened(source)) return {};
  if (const std::string problem = problemWith(source); !problem.empty()) throw std::runtime_error(problem);
  return {};
}

ExitStatus answerUnusable(const ScanOptions& options, const std::string& reason, AnswerWriter& writer) {
  Json event{{"time", 0.0}, {"event", "result"}, {"file", options.source}, {"kind", options.kind->commandName}};
  event.update(invalidInputAnswer(reason));
  writer.write(event);
  writer.finish();
  return someNotRecognized;
}

ExitStatus statusOf(const Answer& answer, const Settings& settings, const Host& host) {
  if (isRecognized(answer)) return allRecognized;
  if (answer["error"]["code"] == "recognition_failed")
    if (const auto broken = host.brokenModels(settings.models); !broken.empty())
      return reportIncomplete(broken, host.err);
  return someNotRecognized;
}

}  // namespace

ExitStatus scan(const ScanOptions& options, const Settings& settings, const Host& host) {
  if (options.kind->isCard())
    if (const auto missing = host.missingModels(settings.models); !missing.empty())
      return reportIncomplete(missing, host.err);

  AnswerWriter writer(host.out, settings);
  const VideoSource source = videoSourceNamed(options.source);
  Size frame;
  try {
    frame = frameSize(source);
  } catch (const std::exception& error) {
    return answerUnusable(options, error.what(), writer);
  }
  const Platform platform = host.makePlatform({.modelDirectory = settings.models, .threads = settings.threads});
  const bool isRealTime = options.isRealTime || source.isCamera;
  const auto run = std::make_shared<ScanRun>(
      options, isRealTime ? platform.dispatch : std::make_shared<ManualDispatch>(), frame, writer);
  const bool isFinished = run->run(platform, [&host] { return host.stopped(); });
  writer.finish();
  return isFinished ? statusOf(run->answer(), settings, host) : interrupted;
}

}  // namespace pravik::cli
