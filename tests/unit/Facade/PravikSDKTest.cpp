#include <gtest/gtest.h>

#include "Platform/ManualDispatch.h"
#include "Pravik.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using SceneType = PravikSDK::SceneType;
using test::portraitSide;

/// An SDK on fakes, without a dispatch unless the test gives one.
struct Fixture : test::FakeParts {
  Image photo{.bitmap = test::plainPicture(400, 300, 200, 200, 200)};

  PravikSDK sdk(std::shared_ptr<Dispatch> dispatch = nullptr) const {
    return PravikSDK(makePlatform(std::move(dispatch)));
  }
};

template <class T>
std::optional<OCRError> errorOf(Task<T> task) {
  const Result<T> result = syncWait(std::move(task));
  return result ? std::nullopt : std::optional(result.error());
}

TEST(IdentityCardRecognition, ReadsTheStraightenedPortraitSideWithTheCardPreset) {
  Fixture f;
  f.engine->blocks = portraitSide();
  f.rectangles->rectangles = {{{{0.1, 0.8}, {0.8, 0.9}, {0.2, 0.1}, {0.9, 0.2}}, {0.1, 0.1, 0.8, 0.8}, 0.9F}};
  const Bitmap straightened = test::plainPicture(320, 200, 0, 0, 0);
  f.renderer->rendered = [&](const Bitmap& bitmap) { return bitmap.width() == 400 ? straightened : bitmap; };
  const auto result = syncWait(f.sdk().recognizeIDCardFront(f.photo));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->name, "张三");
  EXPECT_EQ(result->idNumber, "11010119900307123X");
  EXPECT_EQ(f.engine->requests.at(0), (TextRequest{RecognitionLevel::accurate, {"zh-Hans", "en-US"}, false, 0.018F}));
  EXPECT_EQ(f.engine->pictures.at(0).width(), 320);
}

TEST(IdentityCardRecognition, TellsWhyThereIsNoRecord) {
  Fixture f;
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(f.photo)), OCRError::insufficientText()) << "no text";
  f.engine->blocks = {test::textBlock("hello", 0.5, 0.5)};
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(f.photo)), OCRError::insufficientText()) << "no number";
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardBack(f.photo)), OCRError::insufficientText()) << "no office, no validity";
  f.engine->blocks = portraitSide();
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardBack(f.photo)), OCRError::sceneMismatch("身份证背面", "身份证正面"));
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(Image{})), OCRError::invalidImage());
  f.rectangles->requests.clear();
  const Image tooLarge{.bitmap = test::plainPicture(10001, 10000, 0, 0, 0)};
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(tooLarge)), OCRError::invalidImage());
  EXPECT_TRUE(f.rectangles->requests.empty()) << "it was not even looked at";
  f.engine->failure = "the model is missing";
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(f.photo)), OCRError::recognitionFailed("the model is missing"));
  f.renderer->rendered = [](const Bitmap&) { return std::nullopt; };
  EXPECT_EQ(errorOf(f.sdk().recognizeIDCardFront(f.photo)), OCRError::invalidImage()) << "the rendering failed";
}

TEST(IdentityCardRecognition, WithAnEmptyPlatformGivesErrorsAndDoesNotCrash) {
  const Image photo = Fixture{}.photo;
  const PravikSDK sdk{Platform{}};
  EXPECT_EQ(errorOf(sdk.recognizeIDCardFront(photo)), OCRError::invalidImage());
  EXPECT_EQ(errorOf(sdk.recognizeRawText(photo, SceneType::bankCard)), OCRError::invalidImage());
  EXPECT_EQ(errorOf(sdk.recognizeCode(photo, OCRScanMode::qrCode))->errorCode(), "recognition_failed");
}

TEST(CompletionForm, CallsBackOnceOnTheMainQueueThoughTheSdkIsGone) {
  Fixture f;
  f.engine->blocks = portraitSide();
  const auto dispatch = std::make_shared<ManualDispatch>();
  std::vector<Result<IDCardFrontInfo>> results;
  {
    const PravikSDK sdk = f.sdk(dispatch);
    sdk.recognizeIDCardFront(f.photo, [&](Result<IDCardFrontInfo> result) { results.push_back(std::move(result)); });
    sdk.recognizeIDCardFront(Image{}, [&](Result<IDCardFrontInfo> result) { results.push_back(std::move(result)); });
  }
  EXPECT_EQ(dispatch->waitingOnMain(), 0U);
  dispatch->runGlobal();
  EXPECT_TRUE(results.empty()) << "only the main queue may call back";
  EXPECT_EQ(dispatch->waitingOnMain(), 2U);
  dispatch->runAll();
  ASSERT_EQ(results.size(), 2U);
  const bool firstSucceeded = results[0].has_value();
  EXPECT_NE(firstSucceeded, results[1].has_value());
  EXPECT_EQ(results[firstSucceeded ? 1 : 0].error(), OCRError::invalidImage());
}

TEST(CodeRecognition, GivesTheFirstCodeOfTheModesTypes) {
  Fixture f;
  f.barcodes->codes = {{"https://example.org", {"VNBarcodeSymbologyQR"}, {}}, {"4006381333931", {"other"}, {}}};
  const auto result = syncWait(f.sdk().recognizeCode(f.photo, OCRScanMode::qrCode));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->payload, "https://example.org");
  EXPECT_EQ(result->symbology, "QR Code");
  EXPECT_EQ(f.barcodes->symbologyCounts, (std::vector<std::size_t>{11}));

  EXPECT_EQ(errorOf(f.sdk().recognizeCode(f.photo, OCRScanMode::bankCard)), OCRError::insufficientText());
  EXPECT_EQ(f.barcodes->symbologyCounts.size(), 1U) << "a card mode asks for no code";
  EXPECT_EQ(errorOf(f.sdk().recognizeCode(Image{}, OCRScanMode::qrCode)), OCRError::invalidImage());
  f.barcodes->failure = "broken";
  EXPECT_EQ(errorOf(f.sdk().recognizeCode(f.photo, OCRScanMode::qrCode)), OCRError::recognitionFailed("broken"));
}

TEST(DebugPictures, AreThoseOfEveryStageOfEveryKind) {
  Fixture f;
  f.engine->blocks = portraitSide();
  const auto library = std::make_shared<test::FakePhotoLibrary>();
  Platform platform = f.makePlatform();
  platform.photoLibrary = library;
  const PravikSDK sdk(platform);
  PravikSDK(sdk).setDebugSaveImagesToAlbum(true);
  EXPECT_TRUE(sdk.debugSaveImagesToAlbum()) << "a copy is the same instance";
  static_cast<void>(syncWait(sdk.recognizeIDCardFront(f.photo)));
  static_cast<void>(syncWait(sdk.recognizeCode(f.photo, OCRScanMode::qrCode)));
  static_cast<void>(syncWait(sdk.recognizeRawText(f.photo, SceneType::idCard)));
  EXPECT_EQ(library->labels, (std::vector<std::string>{"身份证-原图", "身份证-自适应预处理", "码-原图", "文字-原图",
                                                       "文字-自适应预处理"}));
}

TEST(RawText, JoinsTheLinesAndIsEmptyWithoutText) {
  Fixture f;
  f.engine->blocks = {test::textBlock("b", 0.5, 0.3), test::textBlock("a", 0.2, 0.31), test::textBlock("c", 0.2, 0.6)};
  EXPECT_EQ(syncWait(f.sdk().recognizeRawText(f.photo, SceneType::bankCard)), "a b\nc");
  EXPECT_EQ(f.engine->requests.at(0).minimumTextHeight, 0.015F);
  f.engine->blocks.clear();
  EXPECT_EQ(syncWait(f.sdk().recognizeRawText(f.photo, SceneType::idCard)), "");
  EXPECT_EQ(f.engine->requests.at(1).minimumTextHeight, 0.018F);
  EXPECT_TRUE(f.rectangles->requests.empty()) << "raw text is read from the whole photo";
}

}  // namespace
}  // namespace pravik
