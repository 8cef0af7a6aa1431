#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "Platform/ManualDispatch.h"
#include "UI/OCRScannerViewController.h"
#include "apps/pravik/HeadlessStage.h"
#include "apps/pravik/ObservedDispatch.h"
#include "apps/pravik/ScanCommand.h"
#include "apps/pravik/ScanEventWriter.h"
#include "apps/pravik/ScanWatch.h"

namespace pravik::cli {

/// One scan: the scanner's screen on a stage without a window, before a camera or a video, until it reports. What
/// happens is written as it happens. To be held by a std::shared_ptr.
class ScanRun : public std::enable_shared_from_this<ScanRun> {
 public:
  /// `dispatch` keeps the time: that of a video file when it is a ManualDispatch, whose clock the scan then moves, else
  /// real time. `frame` is the size of the frames, of no extent when it is not known.
  ScanRun(ScanOptions options, std::shared_ptr<Dispatch> dispatch, const Size& frame, ScanEventWriter& writer);

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
  ScanEventWriter& writer_;
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

}  // namespace pravik::cli
