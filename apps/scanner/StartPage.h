#pragma once

#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <string>

#include "Records/OCRScanMode.h"

namespace pravik::scanner {

/// Where a person says what to scan, and with what.
class StartPage : public QWidget {
 public:
  /// `camera`: the source that is selected at first, by whatever name; empty for the first camera found.
  StartPage(OCRScanMode mode, const std::string& camera);

  std::function<void()> onStart;
  std::function<void()> onOpenPhoto;

  OCRScanMode mode() const;
  /// Empty when there is none.
  std::string camera() const;
  /// What went wrong, or empty for nothing.
  void showMessage(const QString& message);
  /// Lets nothing be started while a photo is read.
  void setBusy(bool busy);

 private:
  QWidget* makeModes(OCRScanMode mode);
  void fillCameras(const std::string& camera);
  void addClip(const QString& path);
  void chooseClip();

  QButtonGroup modes_;
  QComboBox* cameras_;
  QPushButton* start_;
  QPushButton* openPhoto_;
  QLabel* message_;
  int chosenCamera_ = 0;
};

}  // namespace pravik::scanner
