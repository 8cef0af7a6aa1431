#include "apps/scanner/ScannerWindow.h"

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <sstream>

#include "backends/qt/QtPlatform.h"
#include "tests/unit/qt/ShownScanner.h"

// The application's window with real parts, on a clip and on photos.
namespace pravik::scanner {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr std::chrono::seconds longTime{60};

std::string sample(const char* name) {
  return std::string(PRAVIK_SAMPLES_DIRECTORY "/") + name;
}

struct Window {
  std::unique_ptr<ScannerWindow> window;
  std::vector<Answer> records;
  int nothings = 0;

  explicit Window(ScannerSettings settings) {
    QLocale::setDefault(QLocale(QLocale::English));
    window = std::make_unique<ScannerWindow>(std::move(settings), makeQtPlatform());
    window->onRecord = [this](const ScannedRecord& record) { records.push_back(record.answer); };
    window->onNothing = [this] { ++nothings; };
    window->show();
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const QLabel* label : window->currentWidget()->findChildren<QLabel*>())
      if (label->isVisible()) result.push_back(label->text().toStdString());
    return result;
  }
  void press(const char* accessibleName) const {
    for (QAbstractButton* button : window->findChildren<QAbstractButton*>())
      if (button->accessibleName() == accessibleName || button->text() == accessibleName) return button->click();
    ADD_FAILURE() << "no button " << accessibleName;
  }
  void drop(const std::string& path) const {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    // The application itself only delivers a drop that began with a drag.
    static_cast<QObject&>(*window).event(&event);
  }
};

TEST(ScannerWindow, ScansAClipAndShowsTheRecordWithItsSecretsMasked) {
  Window w({.mode = OCRScanMode::bankCard, .camera = sample("bank-card-silver-easy-0005.avi"), .loops = true});
  w.window->begin();
  ASSERT_TRUE(test::waitUntil([&] { return !w.records.empty(); }, longTime));
  EXPECT_EQ(w.records[0]["kind"], "bank-card");
  EXPECT_EQ(w.records[0]["result"]["cardNumber"], "6263 0872 5267 7246");
  EXPECT_EQ(w.records[0]["checks"]["luhn"], true);
  EXPECT_THAT(w.texts(), Contains("**** **** **** 7246"));
  EXPECT_THAT(w.texts(), Contains("中国银行"));
  EXPECT_THAT(w.texts(), Not(Contains("6263 0872 5267 7246")));
  w.press("Show Card number");
  EXPECT_THAT(w.texts(), Contains("6263 0872 5267 7246"));
  w.press("Copy Card number");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "6263 0872 5267 7246");

  w.press("Scan again");
  EXPECT_TRUE(w.window->stage().showsScreen());
}

TEST(ScannerWindow, ReadsPhotosThatAreDropped) {
  Window w({.mode = OCRScanMode::idCardFront});
  w.drop(sample("README.md"));
  EXPECT_TRUE(test::waitUntil([&] { return w.nothings == 1; }, longTime));
  EXPECT_THAT(w.texts(), Contains("This photo cannot be opened"));
  w.drop(sample("id-back-clean-0000.jpg"));
  EXPECT_TRUE(test::waitUntil([&] { return w.nothings == 2; }, longTime));
  w.drop(sample("id-front-clean-0000.jpg"));
  ASSERT_TRUE(test::waitUntil([&] { return !w.records.empty(); }, longTime));
  EXPECT_EQ(w.records[0]["checks"]["checkDigit"], true);
  const std::string number = w.records[0]["result"]["idNumber"];
  EXPECT_THAT(w.texts(), Contains("**************" + number.substr(14)));
}

TEST(ScannerWindow, SaysWhyACameraCannotBeUsed) {
  Window w({.mode = OCRScanMode::bankCard, .camera = sample("nothing-here.avi")});
  w.window->begin();
  EXPECT_FALSE(w.window->stage().showsScreen());
  EXPECT_THAT(w.texts(), Contains(HasSubstr("no such file")));
}

TEST(ScannerSettings, ReadsArgumentsAndRefusesUnknownOnes) {
  std::ostringstream out, err;
  const auto read = readSettings({"--mode", "idCardBack", "--camera", "1", "--loop"}, out, err);
  const auto& settings = std::get<ScannerSettings>(read);
  EXPECT_TRUE(settings.mode == OCRScanMode::idCardBack && settings.camera == "1" && settings.loops);
  for (const std::vector<std::string>& wrong :
       {std::vector<std::string>{"--mode", "passport"}, {"--mode", "0"}, {"--camera"}, {"extra"}})
    EXPECT_EQ(std::get<int>(readSettings(wrong, out, err)), 2) << wrong[0];
}

}  // namespace
}  // namespace pravik::scanner
