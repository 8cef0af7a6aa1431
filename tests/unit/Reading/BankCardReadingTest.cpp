#include "Reading/BankCardReading.h"

#include <gmock/gmock.h>

#include "Pravik.h"
#include "support/Fakes.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using test::textBlock;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

using Blocks = std::vector<RecognizedText>;

struct CardAtStage {
  BankCardInfo info;
  BankCardStage stage;
};

/// An SDK on fakes whose text engine gives one scripted reading after the other, and then nothing.
struct Fixture : test::FakeParts {
  std::shared_ptr<test::FakePhotoLibrary> library = std::make_shared<test::FakePhotoLibrary>();
  PravikSDK sdk;
  Image photo{.bitmap = test::plainPicture(400, 250, 200, 200, 200)};

  Fixture()
      : sdk([this] {
          Platform platform = makePlatform();
          platform.photoLibrary = library;
          return platform;
        }()) {}

  /// The card and its stage, or the error.
  Result<CardAtStage> read(const std::vector<Blocks>& readings) {
    engine->pictures.clear();
    engine->script = {readings.begin(), readings.end()};
    const Reading reading = syncWait(sdk.read(photo, OCRScanMode::bankCard)).value();
    if (!reading.record) return tl::unexpected(reading.record.error());
    return CardAtStage{std::get<BankCardInfo>(*reading.record), reading.report.stage.value()};
  }
};

const Blocks noText;
const Blocks bankOnly{textBlock("招商银行 信用卡", 0.3, 0.1), textBlock("ZHANG SAN", 0.3, 0.9)};
const Blocks goodNumber{textBlock("6222 0212 3456 7894", 0.5, 0.5)};
const Blocks doubtfulNumber{textBlock("6222 0212 3456 7890", 0.5, 0.5)};

TEST(BankCardPipeline, RetriesTheWholeCardEnhancedUnlessTheFirstReadingHasANumber) {
  const test::LogCapture log(OCRLogger::Level::warning);
  Fixture f;
  const auto first = f.read({doubtfulNumber}).value();
  EXPECT_EQ(first.info.cardNumber, "6222 0212 3456 7890") << "though it fails the Luhn check";
  EXPECT_EQ(first.stage, BankCardStage::firstReading);
  EXPECT_EQ(f.engine->requests, (std::vector<TextRequest>{TextRecognizer::Options::bankCard}));

  EXPECT_EQ(f.read({bankOnly, goodNumber}).value().stage, BankCardStage::enhancedRetry);
  EXPECT_EQ(log.count("] 首次解析失败（卡号未提取），准备增强重试"), 1);
  EXPECT_EQ(f.renderer->filters.back(),
            (std::vector<ImageFilter>{ColorControls{1.35, 0.0, 1.0}, SharpenLuminance{0.75, 0.0}}));
}

TEST(BankCardPipeline, TakesTheNumberThatTheLooksAtItsRowAgreeOn) {
  Fixture f;
  f.engine->seenDigits = test::seenRow("6222 0212 3456 7894");
  EXPECT_EQ(f.read({doubtfulNumber})->info.cardNumber, "6222 0212 3456 7894");
  EXPECT_EQ(f.read({bankOnly})->info.bankName, "招商银行") << "the number is read where no piece of it was found";

  f.engine->seenDigits = test::seenRow("6222 0212 9999 7894");
  EXPECT_EQ(f.read({goodNumber}).error(), OCRError::insufficientText())
      << "that it passes the Luhn check is a chance when every look reads other digits";
  EXPECT_EQ(f.read({doubtfulNumber})->info.cardNumber, "6222 0212 3456 7890") << "its failed check is told";

  f.engine->seenDigits = SeenDigits{};
  EXPECT_EQ(f.read({goodNumber})->info.cardNumber, "6222 0212 3456 7894") << "looks that see nothing say nothing";
}

TEST(BankCardPipeline, PicksNoNumberFromALineOfText) {
  Fixture f;
  const Blocks line{textBlock("hotline 95588", 0.2, 0.5), textBlock("2026-11-20", 0.5, 0.5),
                    textBlock("page 8911", 0.8, 0.5)};
  EXPECT_EQ(f.read({line}).error(), OCRError::insufficientText());
  const Blocks pieces{textBlock("6222 0212", 0.3, 0.5), textBlock("3456 7894", 0.6, 0.5)};
  EXPECT_EQ(f.read({pieces})->info.cardNumber, "6222 0212 3456 7894");
}

TEST(BankCardPipeline, ReadsTheBandUntilTwoVariantsAgreeAndAddsWhatTheWholeCardTold) {
  const test::LogCapture log(OCRLogger::Level::debug);
  Fixture f;
  const auto reading = f.read({bankOnly, noText, goodNumber, goodNumber});
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->stage, BankCardStage::numberBand);
  EXPECT_EQ(reading->info, (BankCardInfo{"6222 0212 3456 7894", "6222021234567894", "招商银行",
                                         BankCardInfo::CardType::credit, "ZHANG SAN"}));
  EXPECT_EQ(f.engine->pictures.size(), 4U) << "the third variant is not read";
  for (const char* text :
       {"] 增强重试 Vision 识别到 0 个文本块", "] 增强重试 Vision 返回 0 个文本块，准备 ROI 裁剪重试",
        "] ROI 使用固定比例裁剪", "] ROI 变体(ROI-高对比) 识别到 1 个文本块",
        "] ROI 早退（6222021234567894 得到 2 票，变体ROI-超对比灰）", "] ROI 识别成功，已合并全卡附加信息"})
    EXPECT_THAT(log.lines, Contains(HasSubstr(text)));
}

TEST(BankCardPipeline, LetsTheVariantsOfTheBandVote) {
  const Blocks other{textBlock("4111 1111 1111 1111", 0.5, 0.5)};
  Fixture f;
  EXPECT_EQ(f.read({noText, noText, other, doubtfulNumber, goodNumber})->info.cardNumber, "4111 1111 1111 1111")
      << "of two with a vote each the first; a number that fails the Luhn check has none";
  EXPECT_EQ(f.read({noText, noText, noText, noText, noText, goodNumber})->info.cardNumber, "6222 0212 3456 7894")
      << "the unprocessed band is the last resort";
  EXPECT_EQ(f.read({noText, noText, doubtfulNumber, doubtfulNumber, doubtfulNumber}).error(),
            OCRError::insufficientText());
}

TEST(BankCardPipeline, CutsTheBandWhereTheLatestReadingFoundARow) {
  Fixture f;
  f.read({{textBlock("6222 02", 0.3, 0.3)}, {textBlock("6222 02", 0.3, 0.6)}, goodNumber, goodNumber});
  EXPECT_EQ(f.engine->pictures.at(2).height(), 46) << "0.18 of the height";
}

TEST(BankCardPipeline, FusesWhatTheStagesReadInPieces) {
  Fixture f;
  const Blocks first{textBlock("6222", 0.2, 0.7), textBlock("22202123", 0.4, 0.5)};
  const auto reading = f.read({first, {textBlock("2123456", 0.5, 0.5)}, {textBlock("34567894", 0.5, 0.5)}});
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->stage, BankCardStage::fusion);
  EXPECT_EQ(reading->info.cardNumber, "6222 0212 3456 7894");
}

TEST(BankCardPipeline, FusesSeveralFailedPhotosOfACard) {
  Fixture f;
  const Blocks start{textBlock("招商银行 借记卡", 0.3, 0.1), textBlock("6222", 0.2, 0.7),
                     textBlock("22202123", 0.4, 0.5)};
  EXPECT_EQ(f.read({start}).error(), OCRError::insufficientText());
  EXPECT_EQ(f.sdk.tryCrossAttemptFusion(), std::nullopt);
  EXPECT_EQ(f.read({{textBlock("2123456", 0.5, 0.5)}}).error(), OCRError::insufficientText());
  EXPECT_EQ(f.read({{textBlock("34567894", 0.5, 0.5)}}).error(), OCRError::insufficientText());
  EXPECT_EQ(f.sdk.tryCrossAttemptFusion(), (BankCardInfo{"6222 0212 3456 7894", "6222021234567894", "招商银行",
                                                         BankCardInfo::CardType::debit, std::nullopt}));
  f.sdk.resetCrossAttemptAccumulator();
  EXPECT_EQ(f.sdk.tryCrossAttemptFusion(), std::nullopt);
}

TEST(BankCardPipeline, ForgetsPhotosThatAreTooOld) {
  Fixture f;
  f.read({{textBlock("6222", 0.2, 0.7), textBlock("6222021234567", 0.4, 0.5)}});
  for (std::size_t i = 1; i < CrossAttemptAccumulator::maximumPhotos; ++i) f.read({{textBlock("4567894", 0.5, 0.5)}});
  EXPECT_TRUE(f.sdk.tryCrossAttemptFusion());
  f.read({{textBlock("4567894", 0.5, 0.5)}});
  EXPECT_EQ(f.sdk.tryCrossAttemptFusion(), std::nullopt);
}

TEST(BankCardPipeline, TellsWhyThereIsNoRecord) {
  Fixture f;
  EXPECT_EQ(f.read({}).error(), OCRError::insufficientText());
  EXPECT_EQ(f.engine->pictures.size(), 6U) << "every stage was tried";
  EXPECT_EQ(f.read({{textBlock("姓名 张三 性别 男", 0.3, 0.2)}}).error(),
            OCRError::sceneMismatch("银行卡", "身份证正面"));
  f.photo = {.bitmap = test::plainPicture(10001, 10000, 0, 0, 0)};
  EXPECT_EQ(f.read({}).error(), OCRError::invalidImage());
  f.photo = {};
  EXPECT_EQ(f.read({}).error(), OCRError::insufficientText()) << "no stage has anything to read";
  f.photo = {.bitmap = test::plainPicture(30, 30, 0, 0, 0)};
  EXPECT_EQ(f.read({}).error(), OCRError::insufficientText()) << "too small for a band";
  f.engine->failure = "the model is missing";
  EXPECT_EQ(f.read({}).error(), OCRError::recognitionFailed("the model is missing"));
  EXPECT_EQ(syncWait(PravikSDK(Platform{}).recognizeBankCard(f.photo)).error(), OCRError::insufficientText());
}

TEST(BankCardPipeline, SavesThePicturesOfEveryStageOnlyWhenAsked) {
  Fixture f;
  f.read({});
  EXPECT_TRUE(f.library->labels.empty());
  f.sdk.setDebugSaveImagesToAlbum(true);
  EXPECT_EQ(f.read({}).error(), OCRError::insufficientText()) << "a library that fails does not matter";
  EXPECT_THAT(f.library->labels,
              ElementsAre("银行卡-原图", "银行卡-自适应预处理", "银行卡-增强预处理", "银行卡-ROI原始裁剪"));
}

TEST(CardNumberRow, IsTheRowWithTheMostDigits) {
  const auto rowOf = [](const std::vector<std::pair<std::string, double>>& texts) {
    Observations observations;
    for (const auto& [text, top] : texts) observations.push_back({text, 1.F, {0.1, 1 - top - 0.01, 0.2, 0.02}});
    return detectCardNumberRowY(observations);
  };
  EXPECT_NEAR(rowOf({{"4008888888", 0.2}, {"6222", 0.50}, {"0212", 0.52}, {"345", 0.48}}).value_or(0), 0.50, 1e-9)
      << "the key is that of the row's first block";
  EXPECT_NEAR(rowOf({{"123456", 0.2}, {"654321", 0.6}}).value_or(0), 0.2, 1e-9) << "the first of two";
  EXPECT_EQ(rowOf({{"12345", 0.5}, {"no digits", 0.5}}), std::nullopt);
}

}  // namespace
}  // namespace pravik
