#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include "backends/qt/QtStage.h"
#include "support/StillCamera.h"
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

/// A scanner in a window of its own.
struct ShownScanner : Presented {
  QWidget window;
  Platform platform;
  std::shared_ptr<QtStage> stage;

  ShownScanner(Platform parts, QSize size) : platform(std::move(parts)) {
    window.resize(size);
    stage = std::make_shared<QtStage>(window, platform);
    platform.stage = stage;
    window.show();
  }

  void present(OCRScanMode mode, bool showModeSwitch = false) {
    const PravikSDK sdk(platform);
    Presented::present(std::make_shared<OCRScannerViewController>(mode, showModeSwitch, sdk, platform), *stage);
  }
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
