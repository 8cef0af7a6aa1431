#pragma once

#include <QBoxLayout>
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
  void resizeEvent(QResizeEvent* /*event*/) override { arrange(); }

 private:
  QWidget* makeContent(const ScannedRecord& record);
  static QLayout* makeFields(const ScannedRecord& record);
  static void addRow(QGridLayout& grid, const Field& field);
  /// The picture above the fields, or beside them in a wide window.
  void arrange();

  QScrollArea* scroll_;
  QBoxLayout* sides_ = nullptr;
  QLabel* picture_ = nullptr;
  QPixmap pixmap_;
  QPushButton* again_;
};

}  // namespace pravik::scanner
