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
#include <set>
#include <sstream>

#include "Utils/Text.h"
#include "apps/scanner/Texts.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/QtValues.h"
#include "backends/qt/TouchTarget.h"
#include "tests/unit/qt/ShownScanner.h"

// The application's window with real parts, on a clip and on photos.
namespace pravik::scanner {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
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

  explicit Window(ScannerSettings settings, Language language = Language::english,
                  const Platform& platform = makeQtPlatform()) {
    useLanguage(language);
    window = std::make_unique<ScannerWindow>(std::move(settings), platform);
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
  EXPECT_THAT(w.texts(), Contains("there is no picture that can be read (invalid_image)"));
  w.drop(sample("id-back-clean-0000.jpg"));
  EXPECT_TRUE(test::waitUntil([&] { return w.nothings == 2; }, longTime));
  EXPECT_THAT(w.texts(), Contains(AllOf(HasSubstr("another document was expected"), HasSubstr("(scene_mismatch)"))));
  w.drop(sample("id-front-clean-0000.jpg"));
  ASSERT_TRUE(test::waitUntil([&] { return !w.records.empty(); }, longTime));
  EXPECT_EQ(w.records[0]["checks"]["checkDigit"], true);
  const std::string number = w.records[0]["result"]["idNumber"];
  EXPECT_THAT(w.texts(), Contains("**************" + number.substr(14)));
}

/// A photo's report reaches the page, in the language in use.
TEST(ScannerWindow, ShowsWhatIsDoubtfulOfARecordAndWhyThereIsNone) {
  const struct {
    Language language;
    const char *warning, *unread;
  } cases[] = {{Language::chinese, "! 证件已过有效期", "没有找到二维码或条形码 (no_code_found)"},
               {Language::english, "! the card has expired", "no QR code or bar code was found (no_code_found)"}};
  for (const auto& [language, warning, unread] : cases) {
    Window back({.mode = OCRScanMode::idCardBack}, language);
    back.drop(sample("id-back-clean-0000.jpg"));
    ASSERT_TRUE(test::waitUntil([&] { return !back.records.empty(); }, longTime));
    EXPECT_EQ(back.records[0]["warnings"], Json({"expired"}));
    EXPECT_THAT(back.texts(), Contains(warning));
    Window code({.mode = OCRScanMode::qrCode}, language);
    code.drop(sample("id-back-clean-0000.jpg"));
    ASSERT_TRUE(test::waitUntil([&] { return code.nothings == 1; }, longTime));
    EXPECT_THAT(code.texts(), Contains(unread));

    ReadingReport report;
    report.fields.resize(1);
    report.fields[0].name = "bankName";
    report.fields[0].isDoubtful = true;
    report.warnings = {ReadingWarning::checkFailed};
    const ScannedRecord record =
        describe(BankCardInfo{"6222 0212 3456 7890", "", "中国银行", {}, {}}, report, std::nullopt);
    const bool isChinese = language == Language::chinese;
    EXPECT_EQ(record.fields[0].note, isChinese ? "! 校验位错误" : "! the check digit is wrong");
    EXPECT_EQ(record.fields[1].note, isChinese ? "? 存疑" : "? doubtful");
    EXPECT_EQ(record.warnings.join("|"), isChinese ? "校验未通过" : "a check of the record failed");
  }
}

TEST(ScannerWindow, ShowsWhatIsDoubtfulOfAScannedRecord) {
  Window w({.mode = OCRScanMode::idCardBack, .camera = sample("id-front-easy-0002.avi"), .loops = true});
  w.window->begin();
  w.drop(sample("id-back-clean-0000.jpg"));
  ASSERT_TRUE(test::waitUntil([&] { return !w.records.empty(); }, longTime));
  EXPECT_THAT(w.texts(), Contains("! the card has expired"));
}

/// Whatever the screens say, in every state, is told in English.
TEST(ScannerWindow, ScansInTheLanguageInUse) {
  const auto withoutText = [] {
    Platform parts = makeQtPlatform();
    parts.textEngine = std::make_shared<test::FakeTextEngine>();
    return parts;
  };
  const ScannerSettings settings{.mode = OCRScanMode::bankCard,
                                 .camera = sample("bank-card-silver-easy-0005.avi"),
                                 .loops = true,
                                 .showsModeSwitch = true};
  std::set<std::string> told;
  for (const Platform& parts : {makeQtPlatform(), withoutText()}) {
    Window w(settings, Language::english, parts);
    w.window->begin();
    EXPECT_TRUE(test::waitUntil(
        [&] {
          for (const QWidget* shown : w.window->findChildren<ScreenWidget*>())
            told.insert(shown->accessibleDescription().toStdString());
          for (const QWidget* button : w.window->findChildren<TouchTarget*>())
            told.insert(button->accessibleName().toStdString());
          return !w.records.empty() || w.nothings == 1;
        },
        longTime));
  }
  for (const FrameQuality& quality :
       {FrameQuality{.specularRatio = 1}, FrameQuality{.specularRatio = 0.05F}, FrameQuality{.darkRatio = 1}})
    told.insert(shownText(std::string(quality.qualityHint().value())).toStdString());
  for (const DocumentKind& kind : documentKinds()) told.insert(shownText(std::string(kind.hint)).toStdString());
  // What comes too rarely or goes too quickly to be seen.
  for (const char* text :
       {"正在拍照...", "识别成功", "识别失败，请重新对准卡片", "照片识别失败，请重新选择照片或者扫描", "关闭手电筒",
        "需要相机权限", "请在 设置 → 隐私 → 相机 中允许访问", "去设置", "取消"})
    told.insert(shownText(text).toStdString());
  for (const std::string& text : told) EXPECT_FALSE(std::ranges::any_of(codePoints(text), isIdeograph)) << text;
  EXPECT_THAT(told, Contains(HasSubstr("Not read: try another angle")));
}

TEST(ScannerWindow, SaysWhyACameraCannotBeUsed) {
  Window w({.mode = OCRScanMode::bankCard, .camera = sample("nothing-here.avi")});
  w.window->begin();
  EXPECT_FALSE(w.window->stage().showsScreen());
  EXPECT_THAT(w.texts(), Contains(HasSubstr("no such file")));
}

TEST(ScannerSettings, ReadsArgumentsAndRefusesUnknownOnes) {
  std::ostringstream out, err;
  const auto read = readSettings({"--mode", "idCardBack", "--camera", "1", "--loop", "--lang", "zh"}, out, err);
  const auto& settings = std::get<ScannerSettings>(read);
  EXPECT_TRUE(settings.mode == OCRScanMode::idCardBack && settings.camera == "1" && settings.loops &&
              settings.language == Language::chinese);
  for (const std::vector<std::string>& wrong :
       {std::vector<std::string>{"--mode", "passport"}, {"--mode", "0"}, {"--camera"}, {"--lang", "cn"}, {"extra"}})
    EXPECT_EQ(std::get<int>(readSettings(wrong, out, err)), 2) << wrong[0];
}

}  // namespace
}  // namespace pravik::scanner
