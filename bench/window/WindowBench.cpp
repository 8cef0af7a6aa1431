// Measures the scanner's window, drawn offscreen: pravik-window-bench CLIP.
#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "backends/qt/QtPlatform.h"
#include "backends/qt/ViewPainter.h"
#include "tests/unit/qt/ShownScanner.h"

namespace pravik::bench {
namespace {

using namespace std::chrono_literals;

constexpr int overlayRuns = 200;
constexpr std::chrono::seconds measuredTime{10};

/// Notes how long the main thread was busy with one event, and how often the scanner was painted.
class WatchedApplication : public QApplication {
 public:
  using QApplication::QApplication;

  double longestMilliseconds = 0;
  std::vector<double> paintMilliseconds;

  void startOver() {
    longestMilliseconds = 0;
    paintMilliseconds.clear();
  }

  bool notify(QObject* receiver, QEvent* event) override {
    if (depth_ > 0) return QApplication::notify(receiver, event);
    ++depth_;
    QElapsedTimer clock;
    clock.start();
    const bool isPaint = event->type() == QEvent::UpdateRequest;
    const bool result = QApplication::notify(receiver, event);
    const double milliseconds = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    longestMilliseconds = std::max(longestMilliseconds, milliseconds);
    if (isPaint) paintMilliseconds.push_back(milliseconds);
    --depth_;
    return result;
  }

 private:
  int depth_ = 0;
};

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

/// Looks for outlines as always, but finds none, so that no photo is ever taken.
class BlindDetector : public RectangleDetector {
 public:
  explicit BlindDetector(std::shared_ptr<RectangleDetector> detector) : detector_(std::move(detector)) {}
  std::vector<RectangleObservation> detect(const Bitmap& bitmap, const RectangleRequest& request) const override {
    detector_->detect(bitmap, request);
    return {};
  }

 private:
  std::shared_ptr<RectangleDetector> detector_;
};

void report(const char* what, const WatchedApplication& application, double seconds) {
  std::printf("window/%-22s %5.1f painted frames/s, %4.1f ms a frame (median), main thread busy %4.1f ms at most\n",
              what, static_cast<double>(application.paintMilliseconds.size()) / seconds,
              median(application.paintMilliseconds), application.longestMilliseconds);
}

void measure(const char* what, WatchedApplication& application) {
  application.startOver();
  QElapsedTimer clock;
  clock.start();
  test::wait(measuredTime);
  report(what, application, static_cast<double>(clock.elapsed()) / 1000);
}

void measureWindow(WatchedApplication& application, const std::string& clip) {
  Platform platform = makeQtPlatform({.camera = clip, .loops = true});
  const PravikSDK sdk(platform);
  platform.rectangleDetector = std::make_shared<BlindDetector>(platform.rectangleDetector);
  test::ShownScanner scanner(platform, {1280, 720});
  scanner.present(OCRScanMode::bankCard);
  test::wait(1s);
  measure("preview", application);

  const auto& preview = dynamic_cast<const PreviewView&>(*scanner.screen().view().subviews().front());
  const Image photo{.bitmap = preview.session->previewPicture()};
  std::atomic<bool> isOver = false;
  const std::jthread recognitions([&] {
    while (!isOver) static_cast<void>(syncWait(sdk.recognizeBankCard(photo)));
  });
  test::wait(1s);
  measure("preview, recognising", application);
  isOver = true;
}

void measureOverlay() {
  Platform platform;
  platform.dispatch = makeQtPlatform().dispatch;
  test::ShownScanner scanner(platform, {1080, 1920});
  scanner.present(OCRScanMode::bankCard, true);
  const ViewAnimator animator;
  ViewPainter viewPainter(animator);
  QImage target(1080, 1920, QImage::Format_RGB32);
  target.fill(Qt::gray);
  std::vector<double> times;
  for (int i = 0; i < overlayRuns; ++i) {
    QPainter painter(&target);
    painter.setRenderHint(QPainter::Antialiasing);
    QElapsedTimer clock;
    clock.start();
    viewPainter.paint(painter, scanner.overlay());
    times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
  }
  std::printf("window/overlay 1080 x 1920: %.2f ms (median of %d)\n", median(times), overlayRuns);
}

}  // namespace
}  // namespace pravik::bench

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  pravik::bench::WatchedApplication application(argumentCount, arguments);
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: pravik-window-bench CLIP\n");
    return 2;
  }
  pravik::bench::measureOverlay();
  pravik::bench::measureWindow(application, arguments[1]);
  return 0;
}
