#include <gtest/gtest.h>

#include <chrono>

#include "RunWithCompletion.h"
#include "ScannerScreen.h"
#include "UI/ScannerContinuationAdapter.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using test::Phone;

/// Starts an operation and collects what its caller gets, which must be one thing.
template <class T>
std::shared_ptr<std::vector<Result<T>>> start(const Phone& phone, Task<T> task) {
  auto answers = std::make_shared<std::vector<Result<T>>>();
  runWithCompletion<T>(phone.dispatch, std::move(task),
                       [answers](Result<T> result) { answers->push_back(std::move(result)); });
  phone.dispatch->runAll();
  return answers;
}

void tapClose(const Phone& phone) {
  phone.stage->screens.back()->view().touch({20, 60});
  phone.dispatch->advance(1s);
}

TEST(ScanOperation, givesTheRecordOfItsKind) {
  Phone phone;
  phone.scriptPhotos(3);
  const auto front = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  phone.holdStill();
  EXPECT_TRUE(front->empty()) << "the screen has not gone yet";
  phone.dispatch->advance(1s);
  ASSERT_EQ(front->size(), 1U);
  ASSERT_TRUE(front->front());
  EXPECT_EQ(front->front()->info.name, "张三");
  EXPECT_TRUE(front->front()->capturedImage);
  EXPECT_TRUE(phone.stage->screens.empty());

  phone.engine->blocks = {test::textBlock("签发机关 北京市公安局东城分局", 0.5, 0.7),
                          test::textBlock("有效期限 2015.06.01-2035.06.01", 0.5, 0.85)};
  const auto back = start(phone, phone.sdk->scanIDCardBack(phone.stage));
  phone.holdStill();
  phone.dispatch->advance(1s);
  ASSERT_TRUE(back->size() == 1 && back->front());
  EXPECT_EQ(back->front()->info.issuingAuthority, "北京市公安局东城分局");

  phone.engine->blocks = {test::textBlock("6222 0212 3456 7894", 0.5, 0.5)};
  const auto bank = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.holdStill();
  phone.dispatch->advance(1s);
  ASSERT_TRUE(bank->size() == 1 && bank->front());
  EXPECT_EQ(bank->front()->info.cardNumber, "6222 0212 3456 7894");

  const auto code = start(phone, phone.sdk->scanQRCode(phone.stage));
  phone.camera->session->sendMetadata({{{"AVMetadataObjectTypeQRCode"}, "hello"}});
  phone.dispatch->advance(1s);
  ASSERT_TRUE(code->size() == 1 && code->front());
  EXPECT_EQ(code->front()->info.payload, "hello");
  EXPECT_FALSE(code->front()->capturedImage);
}

TEST(ScanOperation, throwsTheLastErrorOrTheCancel) {
  Phone phone;
  const auto cancelled = start(phone, phone.sdk->scanBankCard(phone.stage));
  tapClose(phone);
  ASSERT_EQ(cancelled->size(), 1U);
  EXPECT_EQ(cancelled->front().error(), OCRError::cancelled());

  const auto failed = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  phone.holdStill();
  phone.holdStill();
  phone.dispatch->advance(1s);
  ASSERT_EQ(failed->size(), 1U);
  EXPECT_EQ(failed->front().error(), OCRError::invalidImage()) << "no photo could be taken";

  const auto nowhere = start(phone, phone.sdk->scanQRCode(nullptr));
  ASSERT_EQ(nowhere->size(), 1U);
  EXPECT_EQ(nowhere->front().error().errorCode(), "recognition_failed");
}

TEST(ScanOperation, answersOnceThoughTheScreenReportsTwiceAndWorksOnceTheCameraIsAllowed) {
  Phone phone;
  phone.camera->status = CameraAuthorizationStatus::denied;
  const auto refused = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  ASSERT_EQ(refused->size(), 1U) << "at once, while the alert is shown";
  EXPECT_EQ(refused->front().error(), OCRError::cameraPermissionDenied());
  phone.stage->alerts.at(0).actions.at(1).handler();
  phone.dispatch->advance(1s);
  EXPECT_EQ(refused->size(), 1U);
  EXPECT_TRUE(phone.stage->screens.empty());

  phone.camera->status = CameraAuthorizationStatus::authorized;
  phone.scriptPhotos(1);
  const auto allowed = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  phone.holdStill();
  phone.dispatch->advance(1s);
  EXPECT_TRUE(allowed->size() == 1 && allowed->front());
}

TEST(ScanOperation, isCancelledWhenScreenOrStageGoWithoutAWord) {
  Phone phone;
  phone.scriptPhotos(1);
  const auto screenGone = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.holdStill();
  phone.stage->screens.clear();
  phone.dispatch->advance(1s);
  ASSERT_EQ(screenGone->size(), 1U);
  EXPECT_EQ(screenGone->front().error(), OCRError::cancelled());

  const auto stageGone = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.platform.stage.reset();
  phone.stage.reset();
  phone.dispatch->advance(1s);
  ASSERT_EQ(stageGone->size(), 1U);
  EXPECT_EQ(stageGone->front().error(), OCRError::cancelled());
}

TEST(ScannerContinuationAdapter, hearsTheFirstReportOnly) {
  Phone phone;
  OCRScannerViewController screen(OCRScanMode::bankCard, false, *phone.sdk, phone.platform);
  std::vector<std::string> heard;
  ScannerContinuationAdapter adapter({.onBankCard = {},
                                      .onIDCardFront = {},
                                      .onIDCardBack = {},
                                      .onCode = [&](const auto& code) { heard.push_back(code.info.payload); },
                                      .onError =
                                          [&](const OCRError& error) {
                                            heard.push_back(error.errorCode());
                                            adapter.scannerDidCancel(screen);
                                          },
                                      .onCancel = [&] { heard.emplace_back("cancel"); }});
  adapter.scannerDidFailWithError(screen, OCRError::invalidImage());
  adapter.scannerDidScanCode(screen, {{"hello", "QR Code"}, std::nullopt});
  adapter.scannerDidCancel(screen);
  EXPECT_EQ(heard, (std::vector<std::string>{"invalid_image"}));
}

TEST(CameraPermission, isAskedForOnlyWhenItIsUndecided) {
  using enum CameraAuthorizationStatus;
  Phone phone;
  for (const auto status : {restricted, denied, authorized}) {
    phone.camera->status = status;
    EXPECT_EQ(phone.sdk->checkCameraPermission(), status == authorized);
    EXPECT_EQ(syncWait(phone.sdk->requestCameraPermission()).value(), status == authorized);
  }
  EXPECT_TRUE(phone.camera->questions.empty());

  phone.camera->status = notDetermined;
  EXPECT_FALSE(phone.sdk->checkCameraPermission());
  for (const bool granted : {false, true}) {
    const auto answer = start(phone, phone.sdk->requestCameraPermission());
    EXPECT_TRUE(answer->empty());
    phone.camera->questions.back()(granted);
    phone.dispatch->runAll();
    ASSERT_EQ(answer->size(), 1U);
    EXPECT_EQ(answer->front().value(), granted);
  }
  const PravikSDK without{Platform{}};
  EXPECT_FALSE(without.checkCameraPermission());
  EXPECT_FALSE(syncWait(without.requestCameraPermission()).value());
}

}  // namespace
}  // namespace pravik
