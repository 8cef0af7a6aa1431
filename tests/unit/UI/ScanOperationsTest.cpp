#include <gtest/gtest.h>

#include "Async/RunOnPool.h"
#include "ScannerScreen.h"

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

/// The one answer that comes within a second.
template <class T>
Result<T> answerOf(const Phone& phone, const std::shared_ptr<std::vector<Result<T>>>& answers) {
  phone.dispatch->advance(1s);
  EXPECT_EQ(answers->size(), 1U);
  return answers->at(0);
}

TEST(ScanOperation, GivesTheRecordOfItsKind) {
  Phone phone;
  phone.scriptPhotos(3);
  const auto front = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  phone.holdStill();
  EXPECT_TRUE(front->empty()) << "the screen has not gone yet";
  EXPECT_EQ(answerOf(phone, front).value().info.name, "张三");
  EXPECT_TRUE(front->front()->capturedImage);
  EXPECT_TRUE(phone.stage->screens.empty());

  phone.engine->blocks = {test::textBlock("签发机关 北京市公安局东城分局", 0.5, 0.7)};
  const auto back = start(phone, phone.sdk->scanIDCardBack(phone.stage));
  phone.holdStill();
  EXPECT_EQ(answerOf(phone, back).value().info.issuingAuthority, "北京市公安局东城分局");

  phone.engine->blocks = {test::textBlock("6222 0212 3456 7894", 0.5, 0.5)};
  const auto bank = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.holdStill();
  EXPECT_EQ(answerOf(phone, bank).value().info.cardNumber, "6222 0212 3456 7894");

  const auto code = start(phone, phone.sdk->scanQRCode(phone.stage));
  phone.camera->session->sendMetadata({{{"AVMetadataObjectTypeQRCode"}, "hello"}});
  EXPECT_EQ(answerOf(phone, code).value().info.payload, "hello");
  EXPECT_FALSE(code->front()->capturedImage);
}

TEST(ScanOperation, ThrowsTheCancelOrThatThereIsNoStage) {
  Phone phone;
  const auto cancelled = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.stage->screens.back()->view().touch({20, 60});
  EXPECT_EQ(answerOf(phone, cancelled).error(), OCRError::cancelled());

  const auto nowhere = start(phone, phone.sdk->scanQRCode(nullptr));
  EXPECT_EQ(answerOf(phone, nowhere).error().errorCode(), "recognition_failed");
}

TEST(ScanOperation, AnswersOnceThoughTheScreenReportsTwice) {
  Phone phone;
  phone.camera->status = CameraAuthorizationStatus::denied;
  const auto refused = start(phone, phone.sdk->scanIDCardFront(phone.stage));
  EXPECT_EQ(refused->size(), 1U) << "at once, while the alert is shown";
  phone.stage->alerts.at(0).actions.at(1).handler();
  EXPECT_EQ(answerOf(phone, refused).error(), OCRError::cameraPermissionDenied());
  EXPECT_TRUE(phone.stage->screens.empty());
}

TEST(ScanOperation, IsCancelledWhenItsScreenGoesWithoutAWord) {
  Phone phone;
  phone.scriptPhotos(1);
  const auto screenGone = start(phone, phone.sdk->scanBankCard(phone.stage));
  phone.holdStill();
  phone.stage->screens.clear();
  EXPECT_EQ(answerOf(phone, screenGone).error(), OCRError::cancelled());
}

TEST(CameraPermission, IsAskedForOnlyWhenItIsUndecided) {
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
    EXPECT_EQ(answerOf(phone, answer).value(), granted);
  }
  const PravikSDK without{Platform{}};
  EXPECT_FALSE(without.checkCameraPermission());
  EXPECT_FALSE(syncWait(without.requestCameraPermission()).value());
}

}  // namespace
}  // namespace pravik
