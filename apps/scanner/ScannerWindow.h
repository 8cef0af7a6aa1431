#pragma once

#include <QStackedWidget>
#include <functional>
#include <memory>
#include <string>

#include "Async/OCRScannerDelegate.h"
#include "Pravik.h"
#include "apps/scanner/ResultPage.h"
#include "apps/scanner/ScannerSettings.h"
#include "apps/scanner/StartPage.h"
#include "backends/qt/QtStage.h"

namespace pravik::scanner {

/// The application's window: the start page, the scanner, and the result of a scan.
class ScannerWindow : public QStackedWidget {
 public:
  /// `bringsCamera`: whether the platform brings its camera along, so that none is opened by name.
  ScannerWindow(ScannerSettings settings, Platform platform, bool bringsCamera = false);
  ~ScannerWindow() override;

  /// Told each record that was scanned.
  std::function<void(const ScannedRecord&)> onRecord;
  /// Told when a scan has ended without a record.
  std::function<void()> onNothing;

  /// Starts what the settings ask for.
  void begin();
  /// Scans with what the start page says.
  void scan();
  /// Reads a photo as what the start page says; while a scanner is shown, as what that one scans.
  void readPhoto(const QString& path);

  QtStage& stage() { return *stage_; }

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  bool prepareCamera();
  void askForPhoto();
  void recognizePhoto(const std::optional<Image>& photo);
  void heard(const ScannerReport& report, const ReadingReport& reading);
  void showRecord(const ScannedRecord& record);
  void showFailure(const QString& message);
  void cameraEnded(const std::string& reason);

  ScannerSettings settings_;
  Platform platform_;
  bool bringsCamera_;
  PravikSDK sdk_;
  std::shared_ptr<QtStage> stage_;
  std::shared_ptr<ScannerListener> listener_;
  /// The one that was shown last.
  std::weak_ptr<OCRScannerViewController> screen_;
  StartPage* start_;
  ResultPage* result_;
};

}  // namespace pravik::scanner
