#include <gmock/gmock.h>

#include "Pravik.h"
#include "Reading/PicturePart.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using Blocks = std::vector<RecognizedText>;

/// A block of a card in shares of the card from its upper left, on a card that lies on a picture in such shares.
RecognizedText printed(std::string text, const Rect& block, const Rect& card) {
  const Rect box{card.x + block.x * card.width, card.y + block.y * card.height, block.width * card.width,
                 block.height * card.height};
  return {TextCandidate{std::move(text), 0.9F}, flipped(box)};
}

constexpr Rect wholePicture{0, 0, 1, 1};

Blocks portraitSide(const Rect& card = wholePicture) {
  return {printed("姓名 张三", {0.067, 0.12, 0.23, 0.07}, card),
          printed("性别 男 民族 汉", {0.067, 0.24, 0.4, 0.06}, card),
          printed("住址 北京市东城区景山前街4号", {0.067, 0.49, 0.5, 0.06}, card),
          printed("公民身份号码", {0.067, 0.84, 0.2, 0.06}, card),
          printed("11010119900307123X", {0.322, 0.84, 0.551, 0.07}, card)};
}

Blocks emblemSide(const Rect& card = wholePicture) {
  return {printed("中华人民共和国", {0.357, 0.13, 0.477, 0.08}, card),
          printed("居民身份证", {0.357, 0.295, 0.477, 0.115}, card),
          printed("签发机关 东城分局", {0.24, 0.72, 0.4, 0.06}, card),
          printed("有效期限 2015.08.26-2035.08.26", {0.24, 0.845, 0.55, 0.06}, card)};
}

Blocks together(Blocks one, const Blocks& other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}

RectangleObservation outlineOf(const Rect& area) {
  const Rect box = flipped(area);
  return {{{box.x, box.maxY()}, {box.maxX(), box.maxY()}, {box.x, box.y}, {box.maxX(), box.y}}, box, 0.9F};
}

constexpr Rect left{0.05, 0.3, 0.4, 0.34}, right{0.55, 0.28, 0.4, 0.34};

/// A picture of 1600 x 1200 pixels, and an engine that reads the most certain outline, the rest of the picture and then
/// one card after the other; without outlines it begins with the picture.
struct Fixture : test::FakeParts {
  Image photo{.bitmap = test::plainPicture(1600, 1200, 200, 200, 200)};
  PravikSDK sdk{makePlatform()};

  std::vector<CardReading> read(const std::vector<Blocks>& readings, ReadingLimits limits = {}) {
    engine->pictures.clear();
    engine->script = {readings.begin(), readings.end()};
    return syncWait(sdk.recognizeCards(photo, std::move(limits))).value().cards;
  }
};

std::vector<std::optional<OCRScanMode>> kindsOf(const std::vector<CardReading>& cards) {
  std::vector<std::optional<OCRScanMode>> kinds;
  for (const CardReading& card : cards) kinds.push_back(card.kind);
  return kinds;
}

using testing::ElementsAre;

TEST(CardsReading, ReadsEachCardWithinItsOutlineFromLeftToRight) {
  Fixture f;
  f.rectangles->rectangles = {outlineOf(right), outlineOf(left)};
  const auto cards = f.read({emblemSide(), portraitSide(left), portraitSide(left), portraitSide()});
  ASSERT_THAT(kindsOf(cards), ElementsAre(OCRScanMode::idCardFront, OCRScanMode::idCardBack));
  EXPECT_EQ(std::get<IDCardFrontInfo>(cards[0].reading.record.value()).address, "北京市东城区景山前街4号");
  EXPECT_EQ(std::get<IDCardBackInfo>(cards[1].reading.record.value()).startDate, "20150826");
  EXPECT_TRUE(cards[0].isOneOfAPair && cards[1].isOneOfAPair);
  EXPECT_NEAR(cards[0].corners.topLeft.x, 0.05 * 1600, 15);
  EXPECT_NEAR(cards[1].corners.bottomRight.y, 0.62 * 1200, 15);
}

TEST(CardsReading, PaintsOverTheCardAndNothingElse) {
  // A part that leans, and goes on beyond the picture; a crop, whose rows are longer than it is wide.
  const Bitmap picture = test::greyPicture(100, 80, [](int x, int) { return x; }).crop({0, 0, 90, 80});
  const Bitmap painted = paintedOver(picture, {{20, 10}, {60, 10}, {40, 100}, {80, 100}});
  for (int y = 0; y < 80; ++y)
    for (int x = 0; x < 90; ++x) {
      const double leftEdge = 20 + 20 * (y + 0.5 - 10) / 90;
      const bool isInside = y >= 10 && x + 0.5 > leftEdge && x + 0.5 < leftEdge + 40;
      ASSERT_EQ(painted.row(y)[x], isInside ? 20 : x) << x << ", " << y;
    }
}

TEST(CardsReading, FindsCardsWithoutOutlinesByTheirPrint) {
  // So close that the text of both would be taken for one card's.
  constexpr Rect above{0.2, 0.1, 0.5, 0.42}, below{0.2, 0.53, 0.5, 0.42};
  const Blocks page = together(portraitSide(above), emblemSide(below));
  Fixture f;
  for (const auto& outlines : {std::vector<RectangleObservation>{}, std::vector{outlineOf({0.05, 0.02, 0.9, 0.96})}}) {
    f.rectangles->rectangles = outlines;
    const auto cards = f.read(outlines.empty() ? std::vector{page, portraitSide(), emblemSide()}
                                               : std::vector{page, page, portraitSide(), emblemSide()});
    ASSERT_THAT(kindsOf(cards), ElementsAre(OCRScanMode::idCardFront, OCRScanMode::idCardBack))
        << "with " << outlines.size() << " outlines, that of a page";
    EXPECT_NEAR(cards[0].corners.topLeft.x, 0.2 * 1600, 60);
    EXPECT_NEAR(cards[0].corners.bottomRight.y, 0.52 * 1200, 60);
  }
}

TEST(CardsReading, GivesTheTextOfWhatIsNoKnownCard) {
  Fixture f;
  f.rectangles->rectangles = {outlineOf(left)};
  const Blocks ticket{printed("会员卡 No. 0042", {0.1, 0.4, 0.5, 0.1}, wholePicture)};
  const auto cards = f.read({ticket, {printed("会员卡", {0.1, 0.4, 0.5, 0.1}, left)}, ticket});
  ASSERT_THAT(kindsOf(cards), ElementsAre(std::nullopt));
  EXPECT_EQ(cards[0].text, "会员卡 No. 0042");
  EXPECT_EQ(cards[0].reading.record.error(), OCRError::insufficientText());
}

TEST(CardsReading, MakesNoRecordOfTwoCardsTogether) {
  Fixture f;
  f.rectangles->rectangles = {outlineOf(left)};
  const Blocks both = together(portraitSide(), emblemSide());
  const auto cards = f.read({both, portraitSide(left), both});
  ASSERT_THAT(kindsOf(cards), ElementsAre(std::nullopt));
  EXPECT_FALSE(cards[0].reading.record);
}

TEST(CardsReading, NamesTheCornersOfATurnedCardAsTheyLookUpright) {
  Fixture f;
  f.rectangles->rectangles = {outlineOf(left)};
  Blocks sideways = portraitSide();
  for (RecognizedText& block : sideways) block.direction = 90;
  const auto cards = f.read({sideways, portraitSide(), {}});
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(cards[0].reading.report.turned, 270);
  EXPECT_GT(cards[0].corners.topLeft.x, cards[0].corners.bottomLeft.x) << "its upper edge is the right one";
}

TEST(CardsReading, APaperThatNamesABankIsNoCardUnlessACardNumberStandsOnIt) {
  Fixture f;
  const RecognizedText heading = printed("中国银行对账单", {0.1, 0.1, 0.5, 0.1}, wholePicture);
  EXPECT_TRUE(f.read({{heading}, {heading}, {heading}}).empty());
  const RecognizedText number = printed("6222021234567891", {0.1, 0.4, 0.7, 0.1}, wholePicture);
  EXPECT_THAT(kindsOf(f.read({{heading, number}})), ElementsAre(OCRScanMode::bankCard)) << "though Luhn fails";

  // A paper has the outline of a card, and more text.
  f.rectangles->rectangles = {outlineOf(wholePicture)};
  f.engine->blocks = Blocks(30, heading);
  const auto cards = f.read({});
  ASSERT_THAT(kindsOf(cards), ElementsAre(std::nullopt));
  EXPECT_FALSE(cards[0].text.empty());
  const RecognizedText sentence =
      printed("持卡人应当妥善保管银行卡及密码，遗失时请", {0.1, 0.6, 0.7, 0.1}, wholePicture);
  f.engine->blocks = {heading, sentence, sentence};
  EXPECT_THAT(kindsOf(f.read({})), ElementsAre(std::nullopt));

  // The numbers of a statement are no card's.
  f.rectangles->rectangles.clear();
  Blocks statement(30, heading);
  statement.push_back(printed("6222021234567894", {0.1, 0.4, 0.7, 0.1}, wholePicture));
  EXPECT_TRUE(f.read({statement, statement, statement}).empty());
}

TEST(CardsReading, TellsWhyAPictureShowsNoCardAndWhatThereWasNoTimeFor) {
  Fixture f;
  const auto reasonOn = [&](const Blocks& texts, ReadingLimits limits = {}) {
    f.engine->script = {texts};
    return syncWait(f.sdk.recognizeCards(f.photo, std::move(limits))).value().unreadReason;
  };
  EXPECT_EQ(reasonOn({printed("今天天气很好", {0.1, 0.4, 0.5, 0.1}, wholePicture)}), UnreadReason::noCardFound);
  EXPECT_EQ(reasonOn({}, {.time = std::chrono::milliseconds(0)}), UnreadReason::timeSpent);
  f.renderer->thumbnail = test::greyPicture(64, 64, [](int, int) { return 10; });
  EXPECT_EQ(reasonOn({}), UnreadReason::tooDark);

  f.rectangles->rectangles = {outlineOf(left)};
  const auto cards = f.read({portraitSide(left)}, {.time = std::chrono::milliseconds(0)});
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(cards[0].reading.report.unreadReason, UnreadReason::timeSpent);
  EXPECT_EQ(syncWait(f.sdk.recognizeCards(Image{})).error(), OCRError::invalidImage());
}

}  // namespace
}  // namespace pravik
