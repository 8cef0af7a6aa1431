#include "Reading/UprightPicture.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <utility>

#include "Pravik.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using test::portraitSide;
using test::textBlock;

using Blocks = std::vector<RecognizedText>;

Blocks running(Blocks blocks, double direction) {
  for (RecognizedText& block : blocks) block.direction = direction;
  return blocks;
}

TEST(PrevailingDirection, IsThatOfMostOfTheText) {
  struct Line {
    std::string text;
    std::optional<double> direction;
  };
  struct Case {
    std::string name;
    std::vector<Line> lines;
    std::optional<double> direction;
  };
  const std::vector<Case> cases{
      {"no text", {}, std::nullopt},
      {"an engine that does not tell", {{"中国工商银行", std::nullopt}}, std::nullopt},
      {"one line", {{"6222021234567894", -90}}, -90},
      {"lines seen from the side", {{"abcd", 80}, {"abcd", 86}, {"abcd", 92}}, 86},
      {"on both sides of 180 degrees", {{"abcd", 178}, {"abcd", -176}}, -179},
      {"a short line another way", {{"abcdefgh", 30}, {"ab", 180}, {"ab", -120}}, 30},
      {"a long line against two short ones", {{"ab", 0}, {"ab", 0}, {"abcdefgh", 90}}, 90},
      {"as much one way as the other", {{"abcd", 0}, {"abcd", 90}}, std::nullopt},
  };
  for (const Case& c : cases) {
    Observations blocks;
    for (const Line& line : c.lines) blocks.push_back({line.text, 1, {}, line.direction});
    const auto direction = prevailingDirection(blocks);
    ASSERT_EQ(direction.has_value(), c.direction.has_value()) << c.name;
    EXPECT_NEAR(direction.value_or(0), c.direction.value_or(0), 1e-9) << c.name;
  }
}

/// A picture of 400 x 300 pixels, and an engine that reads one list of blocks after the other.
struct Fixture : test::FakeParts {
  Image photo{.bitmap = test::plainPicture(400, 300, 200, 200, 200)};
  PravikSDK sdk{makePlatform()};

  Reading read(const std::vector<Blocks>& readings, OCRScanMode mode = OCRScanMode::idCardFront) {
    engine->pictures.clear();
    engine->script = {readings.begin(), readings.end()};
    return syncWait(sdk.read(photo, mode)).value();
  }
};

TEST(TurnedPictures, AreTurnedOnceByRightAnglesAndReadAnew) {
  struct Case {
    double direction;
    int turned;
    int width;
  };
  Fixture f;
  for (const auto& [direction, turned, width] :
       {Case{90, 270, 300}, Case{-90, 90, 300}, Case{-82, 90, 300}, Case{176, 180, 400}, Case{-176, 180, 400}}) {
    const Reading reading = f.read({running({textBlock("号码", 0.5, 0.5)}, direction), portraitSide()});
    ASSERT_TRUE(reading.record) << direction;
    EXPECT_EQ(std::get<IDCardFrontInfo>(*reading.record).name, "张三");
    EXPECT_EQ(reading.report.turned, turned);
    ASSERT_EQ(f.engine->pictures.size(), 2U);
    EXPECT_EQ(f.engine->pictures[1].width(), width) << direction;
  }
  const Reading still = f.read({running(portraitSide(), 90), running(portraitSide(), 90)});
  EXPECT_EQ(f.engine->pictures.size(), 2U) << "not turned again";
  EXPECT_EQ(still.report.turned, 270);
}

TEST(TurnedPictures, AreCutAroundTheTextWhenTheyAreTurnedByAnotherAngle) {
  Fixture f;
  RecognizedText block = textBlock("公民身份号码", 0.5, 0.5);
  block.boundingBox = {0.375, 0.45, 0.25, 0.1};
  const Reading reading = f.read({running({block}, 45), portraitSide()});
  EXPECT_EQ(reading.report.turned, 315);
  std::vector<PerspectiveCorrection> cuts;
  for (const auto& filters : f.renderer->filters)
    for (const ImageFilter& filter : filters)
      if (const auto* cut = std::get_if<PerspectiveCorrection>(&filter)) cuts.push_back(*cut);
  ASSERT_EQ(cuts.size(), 1U);
  // The block is 100 x 30 pixels in the middle, so the text is 104.4 long; around it is a quarter of 300 pixels.
  const double along = (std::hypot(100, 30) / 2 + 75) / std::numbers::sqrt2, across = 75 / std::numbers::sqrt2;
  const auto& [topLeft, topRight, bottomLeft, bottomRight] = cuts[0].corners;
  EXPECT_NEAR(topLeft.x, 200 - along + across, 1e-6);
  EXPECT_NEAR(topLeft.y, 150 + along + across, 1e-6);
  EXPECT_NEAR(topRight.x, 200 + along + across, 1e-6);
  EXPECT_NEAR(topRight.y, 150 - along + across, 1e-6);
  EXPECT_NEAR(bottomLeft.x, 200 - along - across, 1e-6);
  EXPECT_NEAR(bottomRight.y, 150 - along - across, 1e-6);

  f.renderer->rendered = [first = true](const Bitmap& bitmap) mutable -> std::optional<Bitmap> {
    return std::exchange(first, false) ? std::optional(bitmap) : std::nullopt;
  };
  EXPECT_EQ(f.read({running(portraitSide(), 45)}).report.turned, 0) << "read as it lies where it cannot be turned";
}

TEST(TurnedPictures, AreThoseOfEveryKindOfTextAndNoUprightOnes) {
  Fixture f;
  const Blocks number{textBlock("6222 0212 3456 7894", 0.5, 0.5)};
  const Reading card = f.read({running(number, 180), number}, OCRScanMode::bankCard);
  EXPECT_EQ(card.report.turned, 180);
  EXPECT_EQ(card.report.stage, BankCardStage::firstReading);
  EXPECT_EQ(f.engine->pictures.size(), 2U);
  EXPECT_EQ(f.read({running({textBlock("hello", 0.5, 0.5)}, 90)}).report.turned, 270) << "told beside an error";

  f.engine->script = {running({textBlock("second", 0.5, 0.2), textBlock("first", 0.5, 0.8)}, 180),
                      {textBlock("first", 0.5, 0.2), textBlock("second", 0.5, 0.8)}};
  EXPECT_EQ(syncWait(f.sdk.recognizeRawText(f.photo, SceneType::idCard)).value(), "first\nsecond");

  for (const double direction : {0.0, 8.0, -8.0}) {
    EXPECT_EQ(f.read({running(portraitSide(), direction)}).report.turned, 0);
    EXPECT_EQ(f.engine->pictures.size(), 1U) << direction;
  }
}

}  // namespace
}  // namespace pravik
