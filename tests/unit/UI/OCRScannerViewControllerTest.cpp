#include "UI/OCRScannerViewController.h"

#include <gtest/gtest.h>

#include "ScannerScreen.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using Kind = ScannerOverlayView::ScanState::Kind;
using Strings = std::vector<std::string>;
using test::LogCapture;
using test::ScannerScreen;

constexpr std::uint8_t glaring = 255;
constexpr std::uint8_t wellLit = 128;
const Image picked{.bitmap = test::plainPicture(300, 200, 9, 9, 9)};

TEST(Scanner, TakesThePhotoOfAStillCardAndReportsItAfterTheScreenHasGone) {
  const LogCapture log(OCRLogger::Level::verbose);
  ScannerScreen s(OCRScanMode::idCardFront);
  EXPECT_TRUE(s.camera->session->running && s.stage->navigationBarHidden);

  s.rectangles->rectangles = {{{}, Rect{0.25, 0.5, 0.5, 0.25}, 0.9F}};
  s.frames(3);
  EXPECT_EQ(s.state(), Kind::detected);
  EXPECT_EQ(s.camera->device->exposurePoints, (std::vector<Point>{{0.5, 0.375}}));
  s.frames(20);
  EXPECT_EQ(s.camera->session->photoFlashes.size(), 0U);
  s.frames(1);
  EXPECT_EQ(s.camera->session->photoFlashes.size(), 1U);
  EXPECT_EQ(s.state(), Kind::success);
  EXPECT_EQ(s.screen().view().alpha, 0.7) << "the shutter's flash is under way";
  EXPECT_TRUE(s.listener->reports.empty());
  s.camera->device->torchOn = true;

  s.dispatch->advance(300ms);
  EXPECT_FALSE(s.camera->session->running || s.camera->device->torchOn);
  EXPECT_TRUE(s.listener->reports.empty()) << "the screen is still going";
  EXPECT_FALSE(s.screen().lastReport().fields.empty());
  s.dispatch->advance(test::FakeStage::dismissal);
  EXPECT_EQ(s.listener->reports, (Strings{"id-front 张三"}));
  ASSERT_TRUE(s.listener->picture);
  EXPECT_EQ(s.listener->picture->bitmap->width(), 600) << "the cut-out, 5 % larger on each side";
  EXPECT_EQ(s.listener->picture->bitmap->height(), 379);
  EXPECT_TRUE(s.weak.expired());

  for (const char* line :
       {"画质评估: 高光=0.0% 峰值行=0.0% 暗度=0.0% isGood=true", "卡片稳定，触发自动拍照 (第 1 次尝试)",
        "拍照成功, 原图尺寸: (640.0, 1280.0)", "已裁剪到扫描区域, 裁剪后尺寸: (600.0, 379.0)",
        "开始 OCR 识别, 模式: 身份证正面, 图片尺寸: (600.0, 379.0)", "识别成功, autoDismiss=true"})
    EXPECT_EQ(log.count(line), 1) << line;
}

TEST(Scanner, StaysInSuccessWhenItIsNotToCloseItself) {
  ScannerScreen s(OCRScanMode::idCardFront);
  s.screen().autoDismissOnSuccess = false;
  s.holdStill();
  EXPECT_EQ(s.listener->reports, (Strings{"id-front 张三"}));
  EXPECT_EQ(s.state(), Kind::success);
  EXPECT_FALSE(s.screen().isRecognizing());
  s.frames(3);
  EXPECT_EQ(s.state(), Kind::detected) << "the next outline leaves success";
  s.dispatch->advance(1min);
  EXPECT_EQ(s.listener->reports.size(), 1U);
  EXPECT_EQ(s.stage->screens.size(), 1U);
}

TEST(Scanner, HoldsAGlaringCardBackAndOffersTheButtonAfterFourSeconds) {
  const LogCapture log(OCRLogger::Level::debug);
  ScannerScreen s(OCRScanMode::idCardFront);
  s.holdStill(glaring);
  EXPECT_TRUE(s.camera->session->photoFlashes.empty());
  EXPECT_EQ(log.count("画质门控：全局高光 100.0% 超阈值，跳过本次自动拍照 [高光=100.0% 峰值行=100.0% 暗度=0.0%]"), 1);
  EXPECT_EQ(s.overlay().hintLabel()->text, "⚠️ 反光严重，请将卡片向前倾斜约10°");
  EXPECT_EQ(s.overlay().hintLabel()->textColor, (Color{1, 0.85, 0.2}));
  EXPECT_EQ(s.stage->crossDissolves.size(), 1U) << "the second measurement said the same";

  s.dispatch->advance(3999ms);
  EXPECT_FALSE(s.offersManualCapture());
  s.dispatch->advance(1ms);
  EXPECT_TRUE(s.offersManualCapture());
  s.frames(20, wellLit);
  EXPECT_EQ(s.overlay().hintLabel()->text, "将身份证人像面对准此区域");
  EXPECT_EQ(s.stage->crossDissolves.size(), 2U) << "the second good measurement changed nothing";
  EXPECT_TRUE(s.camera->session->photoFlashes.empty()) << "the detector has told of the card already";

  s.tap(s.overlay().manualCaptureButton());
  EXPECT_EQ(log.count("用户点击手动拍照"), 1);
  EXPECT_EQ(s.camera->session->photoFlashes.size(), 1U);
  EXPECT_FALSE(s.offersManualCapture());
  EXPECT_EQ(s.reports(), (Strings{"id-front 张三"}));
}

TEST(Scanner, BlamesDarknessOnTheRowInTheLog) {
  const LogCapture log(OCRLogger::Level::debug);
  ScannerScreen s(OCRScanMode::idCardFront);
  s.holdStill(0);
  EXPECT_EQ(log.count("画质门控：窄带高光峰值行 0.0% 超阈值，跳过本次自动拍照 [高光=0.0% 峰值行=0.0% 暗度=100.0%]"), 1);
  EXPECT_EQ(s.overlay().hintLabel()->text, "⚠️ 光线不足，请开启手电筒");
  s.rectangles->rectangles.clear();
  s.frames(3);
  EXPECT_EQ(s.overlay().hintLabel()->text, "将身份证人像面对准此区域");
}

TEST(Scanner, MeasuresEveryTenthFrame) {
  ScannerScreen s;
  s.present(OCRScanMode::idCardFront, true);
  s.frames(9, glaring);
  EXPECT_TRUE(s.stage->crossDissolves.empty());
  s.screen().modeSwitchControl()->onChange(0);
  s.dispatch->runAll();
  s.frames(9, glaring);
  EXPECT_TRUE(s.stage->crossDissolves.empty()) << "a reset counts anew";
  s.frames(1, glaring);
  EXPECT_EQ(s.stage->crossDissolves.size(), 1U);
}

TEST(Scanner, OffersTheButtonWhenNoCardIsSeenForThreeSeconds) {
  const LogCapture log(OCRLogger::Level::debug);
  ScannerScreen s(OCRScanMode::idCardFront);
  s.dispatch->advance(10s);
  EXPECT_FALSE(s.offersManualCapture()) << "nothing was looked at yet";
  s.tap(s.overlay().manualCaptureButton());
  EXPECT_TRUE(s.camera->session->photoFlashes.empty()) << "a hidden button hears no touch";
  s.frames(3);
  s.dispatch->advance(2s);
  s.frames(3);
  s.rectangles->rectangles = {{{}, Rect{0.25, 0.5, 0.5, 0.25}, 0.9F}};
  s.frames(3);
  s.dispatch->advance(999ms);
  EXPECT_FALSE(s.offersManualCapture());
  s.dispatch->advance(1ms);
  EXPECT_TRUE(s.offersManualCapture()) << "a card that came meanwhile does not call the timer off";
  EXPECT_EQ(log.count("无矩形检测，启动 3s 手动拍照超时计时"), 1);
  EXPECT_EQ(log.count("矩形检测超时 3s，显示手动拍照按钮"), 1);

  s.holdStill();
  s.dispatch->advance(200ms);
  EXPECT_FALSE(s.offersManualCapture()) << "the photo was taken without it";
}

TEST(Scanner, TriesAgainOnceAndThenGivesUp) {
  const LogCapture log(OCRLogger::Level::warning);
  ScannerScreen s(OCRScanMode::idCardFront);
  s.engine->blocks.clear();
  s.holdStill();
  EXPECT_EQ(s.status(), "识别失败，请调整角度重试");
  EXPECT_FALSE(s.screen().isRecognizing());
  EXPECT_TRUE(s.camera->session->running);
  s.dispatch->advance(2s);
  EXPECT_EQ(s.state(), Kind::searching);

  s.holdStill();
  EXPECT_EQ(s.status(), "识别失败，请重新对准卡片");
  EXPECT_FALSE(s.camera->session->running);
  EXPECT_EQ(s.reports(), (Strings{"insufficient_text"}));
  EXPECT_TRUE(s.weak.expired());
  EXPECT_EQ(log.count("识别失败 (1/2): 未能从图像中提取到足够的文字信息"), 1);
  EXPECT_EQ(log.count("识别失败 (2/2): 未能从图像中提取到足够的文字信息"), 1);
}

TEST(Scanner, CountsAPhotoThatFailedOrHasNoPixels) {
  const LogCapture log(OCRLogger::Level::error);
  ScannerScreen s(OCRScanMode::idCardBack);
  s.camera->session->photos = {{std::nullopt, "busy"}, {Image{}, std::nullopt}};
  s.holdStill();
  EXPECT_EQ(log.count("拍照失败: 未获取到图片"), 1);
  EXPECT_EQ(s.screen().retryCount(), 1);
  s.holdStill();
  EXPECT_EQ(s.reports(), (Strings{"invalid_image"}));
}

TEST(Scanner, SavesABankCardByWhatItsPhotosGiveTogether) {
  const LogCapture log(OCRLogger::Level::info);
  ScannerScreen s(OCRScanMode::bankCard);
  s.engine->blocks = {test::textBlock("银联", 0.3, 0.2), test::textBlock("6222 0212 3456", 0.4, 0.5),
                      test::textBlock("6222", 0.2, 0.7)};
  s.holdStill();
  EXPECT_EQ(s.status(), "识别失败，请调整角度重试");
  s.engine->blocks = {test::textBlock("银联", 0.3, 0.2), test::textBlock("3456 7894", 0.6, 0.5)};
  s.holdStill();
  EXPECT_EQ(s.state(), Kind::success);
  EXPECT_EQ(s.reports(), (Strings{"bank-card 6222 0212 3456 7894"}));
  EXPECT_EQ(log.count("跨拍照融合挽救成功: 6222 0212 3456 7894"), 1);

  // Another screen begins without what this one's photos gave.
  s.listener->reports.clear();
  s.scriptPhotos(2);
  s.present(OCRScanMode::bankCard);
  s.holdStill();
  s.holdStill();
  EXPECT_EQ(s.reports(), (Strings{"insufficient_text"}));
}

TEST(Scanner, ReadsTheFirstCodeFromTheLivePicture) {
  const LogCapture log(OCRLogger::Level::info);
  ScannerScreen s(OCRScanMode::qrCode);
  EXPECT_EQ(s.camera->session->types, (std::vector<MetadataObjectType>{{"AVMetadataObjectTypeQRCode"}}));
  const MetadataObject first{{"AVMetadataObjectTypeQRCode"}, "first"};
  const MetadataObject second{{"AVMetadataObjectTypeQRCode"}, "second"};
  s.camera->session->sendMetadata({first});
  s.camera->session->sendMetadata({second});
  s.frames(30);
  EXPECT_EQ(s.state(), Kind::success);
  EXPECT_TRUE(s.rectangles->requests.empty()) << "codes are no cards";
  EXPECT_EQ(s.reports(), (Strings{"code first"}));
  EXPECT_FALSE(s.listener->picture);
  EXPECT_EQ(log.count("扫描到 QR Code: first"), 1);
  EXPECT_EQ(log.count("扫描到 QR Code: second"), 0);

  s.present(OCRScanMode::qrCode);
  s.screen().autoDismissOnSuccess = false;
  s.camera->session->sendMetadata({first});
  s.dispatch->runAll();
  s.camera->session->sendMetadata({second});
  s.dispatch->runAll();
  EXPECT_EQ(s.listener->reports, (Strings{"code first", "code first", "code second"}));
}

TEST(Scanner, ReturnsToTheCameraWhenAPickedPictureIsNotRecognised) {
  ScannerScreen s(OCRScanMode::idCardFront);
  s.frames(3);
  s.engine->blocks.clear();
  for (const Image& picture : {Image{}, picked}) {
    s.tap(s.overlay().albumButton());
    s.stage->pickers.back()(picture);
    s.dispatch->runAll();
    EXPECT_EQ(s.status(), "照片识别失败，请重新选择照片或者扫描");
    EXPECT_TRUE(s.camera->session->running);
    EXPECT_FALSE(s.overlay().scanLineView()->isHidden || s.screen().isRecognizing());
    EXPECT_EQ(s.screen().retryCount(), 0);
  }
}

TEST(Scanner, TellsThatTheCameraMayNotBeUsedAndAsksForIt) {
  const LogCapture log(OCRLogger::Level::warning);
  for (const auto status : {CameraAuthorizationStatus::denied, CameraAuthorizationStatus::restricted,
                            CameraAuthorizationStatus::notDetermined}) {
    ScannerScreen s;
    s.camera->status = status;
    s.present(OCRScanMode::bankCard);
    if (status == CameraAuthorizationStatus::notDetermined) {
      EXPECT_TRUE(s.listener->reports.empty());
      s.camera->questions.at(0)(false);
      s.dispatch->runAll();
    }
    EXPECT_EQ(s.listener->reports, (Strings{"camera_permission_denied"}));
    EXPECT_FALSE(s.camera->session->running);
    ASSERT_EQ(s.stage->alerts.size(), 1U);
    const Alert alert = s.stage->alerts[0];
    EXPECT_EQ((Strings{alert.title, alert.message, alert.actions.at(0).title, alert.actions.at(1).title}),
              (Strings{"需要相机权限", "请在 设置 → 隐私 → 相机 中允许访问", "去设置", "取消"}));
    alert.actions[0].handler();
    EXPECT_EQ(s.stage->settingsOpened, 1);
    alert.actions[1].handler();
    EXPECT_EQ(s.reports(), (Strings{"camera_permission_denied", "cancelled"}));
    EXPECT_TRUE(s.weak.expired());
  }
  EXPECT_EQ(log.count("相机权限未授权"), 3);
}

TEST(Scanner, LightsTheTorchAndClosesOnRequestOnceTheCameraIsAllowed) {
  ScannerScreen s;
  s.camera->status = CameraAuthorizationStatus::notDetermined;
  s.present(OCRScanMode::bankCard);
  EXPECT_FALSE(s.camera->session->running);
  s.camera->questions.at(0)(true);
  s.dispatch->runAll();
  EXPECT_TRUE(s.camera->session->running);
  s.tap(s.overlay().torchButton());
  EXPECT_TRUE(s.camera->device->torchOn);
  EXPECT_EQ(s.overlay().torchButton()->icon, "flashlight.on.fill");
  s.camera->device->withTorch = false;
  s.tap(s.overlay().torchButton());
  EXPECT_EQ(s.overlay().torchButton()->icon, "flashlight.off.fill") << "it shows what the torch does";
  s.camera->device->withTorch = true;

  const auto held = s.weak.lock();
  s.tap(s.overlay().closeButton());
  s.tap(s.overlay().closeButton());
  EXPECT_FALSE(s.camera->session->running || s.camera->device->torchOn);
  s.dispatch->advance(1min);
  EXPECT_EQ(s.listener->reports, (Strings{"cancelled"}));
  EXPECT_FALSE(s.stage->navigationBarHidden);
  EXPECT_TRUE(held->overlayView()->scanLineView()->isHidden);
}

/// How far a scan has come when something happens to it.
const std::pair<const char*, void (*)(ScannerScreen&)> progresses[] = {
    {"searching", [](ScannerScreen& s) { s.frames(3); }},
    {"detected", [](ScannerScreen& s) { s.rectangles->rectangles = {{{}, {0, 0, 1, 1}, 1}}, s.frames(3); }},
    {"held back by glare", [](ScannerScreen& s) { s.holdStill(glaring); }},
    {"capturing, with the photo under way",
     [](ScannerScreen& s) { s.holdStill(glaring), s.overlay().onManualCaptureTapped(); }},
    {"recognising", [](ScannerScreen& s) { s.overlay().onAlbumTapped(), s.stage->pickers[0](picked); }},
    {"success", [](ScannerScreen& s) { s.holdStill(); }},
    {"failed", [](ScannerScreen& s) { s.engine->blocks.clear(), s.holdStill(); }},
    {"given up", [](ScannerScreen& s) { s.engine->blocks.clear(), s.holdStill(), s.holdStill(); }},
};

TEST(Scanner, GoesAtAnyTimeQuietlyWithItsHostOrWithOneCancelByItsUser) {
  for (const auto& [what, bring] : progresses) {
    for (const bool isClosed : {false, true}) {
      SCOPED_TRACE(testing::Message() << what << isClosed);
      ScannerScreen s(OCRScanMode::idCardFront);
      bring(s);
      isClosed ? s.overlay().onCloseTapped() : s.stage->screens.clear();
      s.dispatch->advance(1min);
      EXPECT_TRUE(s.weak.expired());
      EXPECT_FALSE(s.camera->session->running);
      const bool hadGivenUp = what == std::string("given up");
      if (isClosed)
        EXPECT_EQ(s.listener->reports, (Strings{hadGivenUp ? "insufficient_text" : "cancelled"}));
      else
        EXPECT_LE(s.listener->reports.size(), 1U);
    }
  }
}

TEST(Scanner, SurvivesAListenerThatGoesOrThrows) {
  const LogCapture log(OCRLogger::Level::error);
  for (const bool throws : {false, true}) {
    ScannerScreen s(OCRScanMode::idCardFront);
    s.listener->throws = throws;
    s.rectangles->rectangles = {{{}, Rect{0.25, 0.5, 0.5, 0.25}, 0.9F}};
    for (int i = 0; i < 24; ++i) s.camera->session->sendFrame({test::plainPicture(40, 40, 9, 9, 99)});
    if (!throws) s.listener.reset();
    s.dispatch->advance(1min);
    EXPECT_TRUE(s.weak.expired());
  }
  EXPECT_EQ(log.count("回调抛出异常: the host is broken"), 1);
}

TEST(Scanner, MakesDoWithAnEmptyPlatform) {
  ScannerScreen s;
  s.platform = {};
  EXPECT_THROW(OCRScannerViewController(OCRScanMode::bankCard, false, *s.sdk, s.platform), std::invalid_argument);
  s.platform.dispatch = s.dispatch;
  s.present(OCRScanMode::bankCard, true);
  EXPECT_EQ(s.listener->reports, (Strings{"camera_permission_denied"}));
  s.tap(s.overlay().albumButton());
  s.tap(s.overlay().torchButton());
  s.tap(s.overlay().closeButton());
  s.dispatch->advance(1min);
  EXPECT_EQ(s.listener->reports, (Strings{"camera_permission_denied", "cancelled"}));
}

}  // namespace
}  // namespace pravik
