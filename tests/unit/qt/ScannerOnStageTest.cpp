#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <random>
#include <set>
#include <thread>

#include "Async/RunOnPool.h"
#include "backends/opencv/files/OpenCvImageCodec.h"
#include "backends/qt/QtDispatch.h"
#include "tests/unit/qt/ShownScanner.h"

// The scanner's screen on a real window: what is seen, touched, typed and told to a screen reader.
namespace pravik {
namespace {

using namespace std::chrono_literals;
using Kind = ScannerOverlayView::ScanState::Kind;
using test::waitUntil;
using testing::Contains;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

/// An engine that takes its time.
class SlowEngine : public test::FakeTextEngine {
 public:
  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& request) const override {
    std::this_thread::sleep_for(40ms);
    return FakeTextEngine::recognize(bitmap, request);
  }
};

struct Desk : test::FakeParts {
  std::shared_ptr<QtDispatch> dispatch = std::make_shared<QtDispatch>();
  std::shared_ptr<test::StillCamera> camera =
      std::make_shared<test::StillCamera>(dispatch, test::plainPicture(320, 180, 90, 110, 120));

  Desk() {
    engine = std::make_shared<SlowEngine>();
    camera->frameTime = 3ms;
    engine->blocks = test::portraitSide();
  }
  Platform makePlatform() const {
    Platform parts = FakeParts::makePlatform(dispatch);
    parts.captureSystem = camera;
    parts.imageCodec = std::make_shared<OpenCvImageCodec>();
    return parts;
  }
  void layCard() const { rectangles->rectangles = {{{}, Rect{0.2, 0.2, 0.6, 0.6}, 0.9F}}; }
};

struct Shown : Desk, test::ShownScanner {
  explicit Shown(QSize size = {640, 360}) : ShownScanner(makePlatform(), size) {}

  std::set<std::string> targetNames(bool enabledOnly = false) const {
    std::set<std::string> names;
    for (const QAbstractButton* target : window.findChildren<QAbstractButton*>())
      if (target->isVisible() && (target->isEnabled() || !enabledOnly))
        names.insert(target->accessibleName().toStdString());
    return names;
  }
};

TEST(ScannerOnStage, TakesKeysAndTouches) {
  Shown s;
  s.present(OCRScanMode::idCardFront, true);
  s.press(Qt::Key_T);
  EXPECT_TRUE(s.camera->device->torchOn);
  const Rect torch = s.overlay().torchButton()->frame;
  s.click({torch.midX(), torch.midY()});
  EXPECT_FALSE(s.camera->device->torchOn);

  const Rect modes = s.screen().modeSwitchControl()->frame;
  s.click({modes.x + 0.9 * modes.width, modes.midY()});
  EXPECT_EQ(s.overlay().scanMode(), OCRScanMode::idCardFront) << "the fourth segment is disabled";
  s.click({modes.x + 0.6 * modes.width, modes.midY()});
  EXPECT_EQ(s.overlay().scanMode(), OCRScanMode::idCardBack);
  EXPECT_EQ(s.overlay().hintLabel()->text, "将身份证国徽面对准此区域");
  s.click({modes.x + 0.4 * modes.width, modes.midY()});

  test::wait(20ms);
  s.press(Qt::Key_Space);
  EXPECT_TRUE(s.reaches(Kind::recognizing)) << "the photo is taken though no card was seen";
  EXPECT_TRUE(waitUntil([&] { return s.listener->reports == Strings{"id-front 张三"}; }));

  ASSERT_TRUE(waitUntil([&] { return s.widget() == nullptr; })) << "the next key would go to the screen that leaves";

  s.present(OCRScanMode::qrCode);
  s.press(Qt::Key_Space);
  EXPECT_FALSE(s.screen().isRecognizing()) << "codes are not photographed";
  s.press(Qt::Key_Escape);
  EXPECT_TRUE(waitUntil([&] { return s.weak.expired(); }));
  EXPECT_THAT(s.listener->reports, ElementsAre("id-front 张三", "cancelled"));
}

TEST(ScannerOnStage, TellsScreenReadersWhatIsThere) {
  QLocale::setDefault(QLocale(QLocale::English));
  Shown s;
  s.layCard();
  s.present(OCRScanMode::idCardFront, true);
  EXPECT_TRUE(waitUntil([&] { return s.targetNames().contains("Close"); }));
  for (const char* name : {"Open a photo", "打开手电筒", "银行卡", "二维码/条形码"})
    EXPECT_THAT(s.targetNames(), Contains(name));
  EXPECT_FALSE(s.targetNames(true).contains("二维码/条形码"));
  EXPECT_FALSE(s.targetNames().contains("手动拍照")) << "it is hidden";
  EXPECT_TRUE(s.reaches(Kind::recognizing));
  EXPECT_TRUE(waitUntil([&] { return s.widget()->accessibleDescription().contains("正在识别..."); }));
  // The keyboard presses what it stands on.
  for (QAbstractButton* target : s.window.findChildren<QAbstractButton*>())
    if (target->accessibleName() == "Close") target->click();
  EXPECT_TRUE(waitUntil([&] { return s.listener->reports == Strings{"cancelled"}; }));
}

TEST(ScannerOnStage, LaysItselfOutForUprightAndWideWindows) {
  Shown s;
  s.present(OCRScanMode::bankCard);
  const std::pair<QSize, double> windowsAndWidths[] = {
      {{360, 640}, 360}, {{640, 360}, 640}, {{1600, 900}, 1600}, {{900, 900}, 652}, {{2400, 900}, 1600}};
  for (const auto& [window, width] : windowsAndWidths) {
    s.window.resize(window);
    QApplication::processEvents();
    SCOPED_TRACE(testing::Message() << window.width() << " x " << window.height());
    const Rect frame = s.screen().view().frame;
    EXPECT_EQ(frame, (Rect{0, 0, width, static_cast<double>(window.height())}));
    EXPECT_GE(s.overlay().torchButton()->frame.y, s.overlay().cutoutRect().maxY());
    EXPECT_LE(s.overlay().torchButton()->frame.maxY(), frame.height);
  }
}

TEST(ScannerOnStage, AsksForTheCameraWithAnAlert) {
  for (const char* answer : {"去设置", "取消"}) {
    Shown s;
    s.camera->status = CameraAuthorizationStatus::denied;
    s.present(OCRScanMode::bankCard);
    QMessageBox* alert = nullptr;
    ASSERT_TRUE(waitUntil([&] { return (alert = s.window.findChild<QMessageBox*>()) != nullptr; }));
    EXPECT_EQ(alert->text(), "需要相机权限");
    for (QAbstractButton* button : alert->buttons())
      if (button->text() == answer) button->click();
    const bool cancels = answer == std::string("取消");
    EXPECT_EQ(waitUntil([&] { return s.weak.expired(); }, cancels ? 5s : 100ms), cancels);
    EXPECT_EQ(s.listener->reports.size(), cancels ? 2U : 1U);
  }
}

TEST(ScannerOnStage, PicksAPhotoAndNothingElse) {
  const QString photo = QStringLiteral(PRAVIK_SAMPLES_DIRECTORY "/id-front-clean-0000.jpg");
  const QString text = QStringLiteral(PRAVIK_SAMPLES_DIRECTORY "/README.md");
  Shown s;
  s.present(OCRScanMode::idCardFront);
  const auto openDialog = [&] {
    s.press(Qt::Key_O);
    return s.window.findChild<QFileDialog*>();
  };
  QFileDialog* dialog = openDialog();
  ASSERT_NE(dialog, nullptr);
  dialog->reject();
  EXPECT_TRUE(s.stage->pickPhoto(text));
  test::wait(50ms);
  EXPECT_TRUE(s.isIn(Kind::searching)) << "neither nothing nor a text is recognised";

  dialog = openDialog();
  ASSERT_NE(dialog, nullptr);
  emit dialog->fileSelected(photo);
  EXPECT_TRUE(waitUntil([&] { return s.listener->reports == Strings{"id-front 张三"}; }));
  EXPECT_GT(s.listener->picture->bitmap->width(), 500) << "the photo itself";
  EXPECT_FALSE(s.stage->pickPhoto(photo)) << "no screen is there to take it";
}

TEST(ScannerOnStage, CancelsAScanWhenTheWindowOrTheStageHasGone) {
  Desk desk;
  for (const bool takesWindow : {true, false}) {
    auto window = std::make_unique<QWidget>();
    auto stage = std::make_shared<QtStage>(*window, desk.makePlatform());
    window->show();
    std::string outcome;
    runWithCompletion<OCRScannerResult<BankCardInfo>>(
        desk.dispatch, PravikSDK(desk.makePlatform()).scanBankCard(stage),
        [&](const Result<OCRScannerResult<BankCardInfo>>& result) { outcome = result.error().errorCode(); });
    ASSERT_TRUE(waitUntil([&] { return stage->showsScreen(); }));
    if (takesWindow) window.reset();
    stage.reset();
    EXPECT_TRUE(waitUntil([&] { return !outcome.empty(); }));
    EXPECT_EQ(outcome, "cancelled");
  }
}

/// At any moment: in every state, during every timer, photo, recognition and dismissal.
TEST(ScannerOnStage, LeavesNothingBehindWhenItIsClosedAtAnyMoment) {
  std::mt19937 random(7);
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  std::weak_ptr<Dispatch> dispatch;
  for (int i = 0; i < 100; ++i) {
    Shown s;
    dispatch = s.dispatch;
    s.camera->photoDelay = std::chrono::milliseconds(below(20));
    if (i % 3 == 0) s.engine->blocks.clear();
    if (i % 4 != 0) s.layCard();
    const auto mode = static_cast<OCRScanMode>(i % 4);
    if (i % 16 == 3) s.camera->code = MetadataObject{{"AVMetadataObjectTypeQRCode"}, "code"};
    s.present(mode, i % 2 == 0);
    test::wait(std::chrono::milliseconds(below(250)));
    if (i % 5 == 0 && s.widget() != nullptr) s.press(Qt::Key_Space);
    if (i % 7 == 0 && s.widget() != nullptr) s.press(Qt::Key_Escape);
    test::wait(std::chrono::milliseconds(below(20)));
    // The window goes with the end of this turn.
  }
  test::wait(20ms);
  EXPECT_TRUE(dispatch.expired());
}

}  // namespace
}  // namespace pravik
