#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <stdexcept>

#include "UI/OCRScannerViewController.h"
#include "backends/qt/QtStage.h"
#include "tests/unit/UI/ScannerScreen.h"

namespace pravik::test {

/// Runs the event loop until something holds; false when it does not within the time.
inline bool waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds time = std::chrono::seconds(15)) {
  QElapsedTimer clock;
  clock.start();
  while (!holds()) {
    if (clock.hasExpired(time.count())) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  return true;
}

/// Runs the event loop for a while.
inline void wait(std::chrono::milliseconds time) {
  waitUntil([] { return false; }, time);
}

/// A frame of a clip, counted from its beginning or, when negative, from its end.
inline Bitmap frameOfClip(const std::filesystem::path& clip, int index) {
  cv::VideoCapture video(clip.string());
  if (index < 0) index += static_cast<int>(video.get(cv::CAP_PROP_FRAME_COUNT));
  cv::Mat frame;
  for (int i = 0; i <= index; ++i)
    if (!video.read(frame)) throw std::runtime_error("no frame " + std::to_string(index) + " in " + clip.string());
  auto pixels = allocatePixels(PixelFormat::bgra8, frame.cols, frame.rows);
  cv::Mat target(frame.rows, frame.cols, CV_8UC4, pixels.get());
  cv::cvtColor(frame, target, cv::COLOR_BGR2BGRA);
  return {PixelFormat::bgra8, frame.cols, frame.rows, std::ptrdiff_t{4} * frame.cols, pixels};
}

/// A scanner in a window of its own.
struct ShownScanner {
  QWidget window;
  Platform platform;
  std::shared_ptr<QtStage> stage;
  std::shared_ptr<Listener> listener = std::make_shared<Listener>();
  std::weak_ptr<OCRScannerViewController> weak;

  ShownScanner(Platform parts, QSize size) : platform(std::move(parts)) {
    window.resize(size);
    stage = std::make_shared<QtStage>(window, platform);
    platform.stage = stage;
    window.show();
  }

  void present(OCRScanMode mode, bool showModeSwitch = false) {
    const auto screen = std::make_shared<OCRScannerViewController>(mode, showModeSwitch, PravikSDK(platform), platform);
    screen->delegate = listener;
    weak = screen;
    stage->present(screen, false, {});
  }

  OCRScannerViewController& screen() const { return *weak.lock(); }
  const ScannerOverlayView& overlay() const { return *screen().overlayView(); }
  bool isIn(ScannerOverlayView::ScanState::Kind kind) const {
    return !weak.expired() && overlay().state().kind == kind;
  }
  bool reaches(ScannerOverlayView::ScanState::Kind kind) const {
    return waitUntil([&] { return isIn(kind); });
  }
  /// The widget that shows the screen.
  QWidget* widget() const { return window.findChild<ScreenWidget*>(); }

  void press(int key) const {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget(), &down);
  }
  void click(QPointF point) const {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, point, widget()->mapToGlobal(point), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
      QCoreApplication::sendEvent(widget(), &event);
    }
  }
};

}  // namespace pravik::test
