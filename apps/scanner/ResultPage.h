#pragma once

#include <QGridLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QWidget>
#include <functional>

#include "apps/scanner/ScannedRecord.h"

namespace pravik::scanner {

/// Shows what a scan brought.
class ResultPage : public QWidget {
 public:
  ResultPage();

  std::function<void()> onScanAgain;
  std::function<void()> onBack;

  void show(const ScannedRecord& record);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QWidget* makeFields(const ScannedRecord& record);
  static void addRow(QGridLayout& grid, const Field& field);
  void fitPicture();

  QScrollArea* scroll_;
  QLabel* picture_ = nullptr;
  QPixmap pixmap_;
  QPushButton* again_;
};

}  // namespace pravik::scanner
