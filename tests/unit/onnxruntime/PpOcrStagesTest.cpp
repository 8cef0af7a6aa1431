#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <exception>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "backends/DefaultPlatform.h"
#include "backends/onnxruntime/CtcDecoder.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/OnnxTextEngine.h"
#include "backends/onnxruntime/ProbabilityMap.h"
#include "backends/onnxruntime/ReadingOrder.h"
#include "backends/onnxruntime/ReadingText.h"
#include "backends/onnxruntime/SecondLook.h"
#include "backends/onnxruntime/TextDetector.h"
#include "backends/opencv/Mat.h"
#include "support/TemporaryFolder.h"

namespace pravik {
namespace {

using namespace ppocr;
using testing::HasSubstr;

const std::string models = defaultModelDirectory().string();

TextBox boxAt(float left, float top, float width = 50, float height = 20) {
  return {{{{left, top}, {left + width, top}, {left + width, top + height}, {left, top + height}}}, .9F};
}

TEST(CtcDecoderTest, TakesRunsOnceAndSplitsThemAtBlanks) {
  // Three classes: blank, a, b. The steps say a a blank a b.
  const std::vector<float> steps{.1F, .8F, .1F, .0F, .9F, .1F, .9F, .1F, .0F, .3F, .7F, .0F, .2F, .2F, .6F};
  const std::vector<CtcCharacter> expected{{1, .9F, 1}, {1, .7F, 3}, {2, .6F, 4}};
  EXPECT_EQ(decodeCtc(steps, 3), expected);
  EXPECT_TRUE(decodeCtc({}, 3).empty());
}

TEST(CtcDecoderTest, ReadsDigitsAsIfNothingElseCouldStandThere) {
  // Four classes: blank, 7, a letter that looks like a 7, and one that looks like no digit. The last step is padding.
  DigitClasses digits;
  digits[7] = {1, 2};
  const std::vector<float> steps{.10F, .05F, .10F, .75F,  // the other letter hides a 7
                                 .30F, .30F, .30F, .10F,  // the same digit, surer
                                 .50F, .20F, .10F, .20F,  // blank
                                 .00F, .00F, .80F, .20F, .0F, 1.F, .0F, .0F};
  const SeenDigits seen = decodeDigits(steps, 4, digits, 4);
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_DOUBLE_EQ(seen[0].position, 1.5 / 4);
  EXPECT_FLOAT_EQ(seen[0].probabilities[7], .6F / .9F);
  EXPECT_DOUBLE_EQ(seen[1].position, 3.5 / 4);
  EXPECT_FLOAT_EQ(seen[1].probabilities[7], 1);
}

TEST(OnnxTextEngineTest, ReadsRowsOfDigitsQuicklyAndThoroughly) {
  cv::Mat row(48, 520, CV_8UC1, cv::Scalar(220));
  cv::putText(row, "6222 0212 3456 7894", {8, 38}, cv::FONT_HERSHEY_DUPLEX, 1.25, 30, 2);
  const cv::Mat blank(48, 520, CV_8UC1, cv::Scalar(220));
  const OnnxTextEngine engine({.modelDirectory = models});
  for (const DigitReader reader : {DigitReader::quick, DigitReader::thorough}) {
    const auto rows = engine.readDigits({toBitmap(row), toBitmap(blank)}, reader, {});
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_GE(rows[0].size(), 15U);
    EXPECT_TRUE(rows[1].empty());
  }
  EXPECT_TRUE(engine.readDigits({}, DigitReader::quick, {}).empty());
}

TEST(ReadingTextTest, PutsSpacesWhereLettersStandApartAndMakesSpellingsOne) {
  const KeyList keys("A\n7\n阿\n・\n７\n.\n");
  const auto text = [&](std::initializer_list<std::pair<int, int>> labelsAndSteps) {
    std::vector<CtcCharacter> characters;
    for (const auto& [label, step] : labelsAndSteps) characters.push_back({label, 1, step});
    return readingText(characters, keys);
  };
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 10}, {1, 19}, {1, 23}, {1, 27}}), "AAA AAA");
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 10}, {1, 16}, {1, 20}, {1, 24}}), "AAAAAA") << "W and M stand as far apart";
  EXPECT_EQ(text({{2, 2}, {2, 6}, {3, 16}, {2, 20}, {2, 24}, {2, 28}}), "77阿777");
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 19}}), "AAA") << "too short to tell";
  EXPECT_EQ(text({{3, 0}, {4, 0}, {3, 0}}), "阿·阿");
  EXPECT_EQ(text({{5, 0}, {6, 0}, {5, 0}}), "7.7");
}

TEST(ProbabilityMapTest, PutsThePartsOfALineTogether) {
  cv::Mat map = cv::Mat::zeros(200, 400, CV_32F);
  map(cv::Rect(20, 50, 100, 16)) = 0.9;
  map(cv::Rect(135, 52, 40, 10)) = 0.65;  // a digit between two groups, too unlikely alone
  map(cv::Rect(190, 50, 100, 16)) = 0.9;
  map(cv::Rect(340, 50, 40, 16)) = 0.9;  // further away than the boxes grow
  map(cv::Rect(20, 75, 100, 16)) = 0.9;  // the next line
  const auto boxes = boxesOf(map);
  ASSERT_EQ(boxes.size(), 3U);
  EXPECT_EQ(std::ranges::count_if(boxes, [](const TextBox& box) { return box.width() > 270; }), 1);
}

TEST(ProbabilityMapTest, FindsTiltedLinesAndLeavesNoiseOut) {
  cv::Mat map = cv::Mat::zeros(200, 300, CV_32F);
  const cv::RotatedRect line({150, 80}, {160, 12}, 10);
  cv::Point2f corners[4];
  line.points(corners);
  cv::fillConvexPoly(map, std::vector<cv::Point>(corners, corners + 4), cv::Scalar(0.95));
  map(cv::Rect(20, 150, 60, 12)) = 0.4;    // too unlikely
  map(cv::Rect(120, 150, 20, 20)) = 0.65;  // too unlikely for a box as wide as high
  map(cv::Rect(200, 150, 2, 2)) = 1;       // too small
  const auto boxes = boxesOf(map);
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_GT(boxes[0].score, 0.9F);
  EXPECT_NEAR(boxes[0].bounds().x + boxes[0].bounds().width / 2, 150, 2);
  EXPECT_GT(boxes[0].width(), 160);
  EXPECT_GT(boxes[0].height(), 20);
}

TEST(ProbabilityMapTest, AMapStrewnWithDotsTakesNoLongerThanAPage) {
  cv::Mat map = cv::Mat::zeros(720, 960, CV_32F);
  for (int y = 0; y + 8 <= map.rows; y += 8)
    for (int x = 0; x + 8 <= map.cols; x += 8) map(cv::Rect(x, y, 5, 5)) = 0.9;
  map(cv::Rect(100, 300, 200, 20)) = 0.9;
  const auto begin = std::chrono::steady_clock::now();
  const auto boxes = boxesOf(map);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_TRUE(std::ranges::any_of(boxes, [](const TextBox& box) { return box.width() > 200; })) << "a line is larger";
}

TEST(SecondLookTest, IsForNumbersAndDates) {
  for (const char* text : {"11010119900307123X", "2010.05.12-2030.05.12", "6222 0212 3456 7890"})
    EXPECT_TRUE(deservesSecondLook(text)) << text;
  for (const char* text : {"", "姓名张三", "1990年3月7日", "住址上海市南京路100号"})
    EXPECT_FALSE(deservesSecondLook(text)) << text;
}

TEST(SecondLookTest, OfTooManyLinesTheNumbersComeFirst) {
  std::vector<TextCandidate> readings(200, {"blurred", .6F});
  readings[3] = {"clear", .99F};
  readings[199] = {"6222 0212 3456 7890", .99F};
  const auto lines = linesToReread(readings);
  EXPECT_LT(lines.size(), 100U);
  EXPECT_EQ(lines.back(), 199U);
  EXPECT_EQ(std::vector(lines.begin(), lines.begin() + 4), (std::vector<std::size_t>{0, 1, 2, 4}));
  EXPECT_EQ(linesToReread({{"6222021234567890", .99F}, {"clear", .99F}, {"blurred", .6F}}),
            (std::vector<std::size_t>{0, 2}));
}

TEST(SecondLookTest, KeepsWhatRepeatsButForSpacesAndBreaksTiesByConfidence) {
  const std::pair<std::vector<TextCandidate>, const char*> cases[] = {
      {{{"17", .9F}, {"117", .99F}, {"17", .8F}}, "17"},
      {{{"17", .9F}, {"117", .99F}}, "117"},
      {{{"62228812", .9F}, {"6222~8812", .8F}, {"62223812", .99F}}, "62228812"},
      {{{"GAO SILEI", .9F}, {"GAO SI LEI", .8F}, {"GAO SI LEI", .7F}}, "GAO SI LEI"},
  };
  for (const auto& [readings, kept] : cases) EXPECT_EQ(agreedReading(readings).text, kept);
  EXPECT_NEAR(agreedReading({{"17", .9F}, {"117", .99F}, {"17", .6F}}).confidence, .5F, 1e-6)
      << "a reading that disagrees counts nothing";
}

TEST(SecondLookTest, VotesForEachCharacterWhenNoReadingRepeats) {
  const TextCandidate voted =
      agreedReading({{"62228812", .9F}, {"62223812 ", .9F}, {"62228817", .9F}, {"6222881", .9F}});
  EXPECT_EQ(voted.text, "62228812");
  EXPECT_NEAR(voted.confidence, .9F * 22 / 32, 1e-6) << "22 of 24 characters agree; the fourth reading counts nothing";
  EXPECT_LT(agreedReading({{"|/~", .6F}, {"i_", .6F}, {"l-.x", .6F}}).confidence, .3F);
}

TEST(TextBoxTest, KeepsTheLineWhenTurnedAndGrowsByItsHeight) {
  const TextBox box = boxAt(10, 10, 100, 20);
  EXPECT_EQ(turned(box).corners[0], cv::Point2f(110, 30));
  EXPECT_EQ(turned(box).corners[1], cv::Point2f(10, 30));
  EXPECT_EQ(withMargin(box, 0.5F).corners[2], cv::Point2f(120, 40));
}

TEST(ReadingOrderTest, GoesByRowsAndThenFromTheLeft) {
  std::vector<TextBox> boxes{boxAt(100, 4), boxAt(0, 60), boxAt(0, 0)};
  sortInReadingOrder(boxes);
  EXPECT_EQ(boxes[0].corners[0], cv::Point2f(0, 0));
  EXPECT_EQ(boxes[1].corners[0], cv::Point2f(100, 4));
}

TEST(DetectionSizeTest, IsAMultipleOfTheModelsStepAndBounded) {
  for (const cv::Size picture : {cv::Size(1, 1), cv::Size(4000, 3000), cv::Size(1500, 270), cv::Size(20000, 3)})
    for (const auto level : {RecognitionLevel::accurate, RecognitionLevel::fast}) {
      const cv::Size size = detectionSize(picture, level);
      EXPECT_EQ(size.width % 32, 0);
      EXPECT_EQ(size.height % 32, 0);
      EXPECT_GT(std::min(size.width, size.height), 0);
      EXPECT_LE(std::max(size.width, size.height), 4096);
    }
}

std::string failureOf(const std::string& modelDirectory, const TextRequest& request = {}) {
  try {
    const Bitmap dot(PixelFormat::grey8, 1, 1, 1, allocatePixels(PixelFormat::grey8, 1, 1));
    OnnxTextEngine({.modelDirectory = modelDirectory}).recognize(dot, request);
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

TEST(OnnxTextEngineTest, NamesAModelThatIsMissingOrDamagedAndALanguageThatItLacks) {
  const test::TemporaryFolder folder;
  EXPECT_THAT(failureOf(folder.path()), HasSubstr(detectionModelFile));
  folder.write(detectionModelFile, "no model");
  EXPECT_THAT(failureOf(folder.path()), HasSubstr("damaged"));
  EXPECT_FALSE(checkModels(folder.path()).front().isUsable());
  TextRequest request;
  request.recognitionLanguages = {"en-US", "tlh"};
  EXPECT_THAT(failureOf(models, request), HasSubstr("tlh"));
}

TEST(OnnxTextEngineTest, FindsNothingOnPicturesOfExtremeShapes) {
  const OnnxTextEngine engine({.modelDirectory = models});
  for (const auto& [width, height] : {std::pair(1, 1), std::pair(3000, 2), std::pair(2, 3000)}) {
    const Bitmap blank(PixelFormat::grey8, width, height, width, allocatePixels(PixelFormat::grey8, width, height));
    EXPECT_TRUE(engine.recognize(blank, {}).empty()) << width << " x " << height;
  }
}

/// The picture turned clockwise, with as much more of its ground as holds it.
cv::Mat turnedClockwise(const cv::Mat& picture, double degrees) {
  const cv::Point2f middle(static_cast<float>(picture.cols) / 2, static_cast<float>(picture.rows) / 2);
  const int side = picture.cols + picture.rows;
  cv::Mat turn = cv::getRotationMatrix2D(middle, -degrees, 1), turned;
  turn.col(2) += cv::Mat(cv::Vec2d((side - picture.cols) / 2.0, (side - picture.rows) / 2.0));
  cv::warpAffine(picture, turned, turn, {side, side}, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
  return turned;
}

TEST(OnnxTextEngineTest, TellsInWhichDirectionTextRuns) {
  cv::Mat page(360, 640, CV_8UC1, cv::Scalar(235));
  int y = 30;
  for (const char* line : {"PEOPLE AND PLACES", "Chapter of Tables", "6222 0212 3456 7894"})
    cv::putText(page, line, {60, y += 80}, cv::FONT_HERSHEY_DUPLEX, 1.4, 30, 2);
  const OnnxTextEngine engine({.modelDirectory = models});
  for (const double degrees : {0, 30, 90, 180, 264, 270}) {
    const auto texts = engine.recognize(toBitmap(turnedClockwise(page, degrees)), {});
    EXPECT_GE(texts.size(), 3U) << degrees;
    for (const RecognizedText& text : texts)  // The box of a short word need not lie along it.
      EXPECT_NEAR(std::remainder(text.direction.value() - degrees, 360), 0, 25)
          << degrees << ": " << text.topCandidate->text;
  }
}

TEST(OnnxTextEngineTest, ReadsAPageFullOfDigitsForAsLongAsItMayAndAnswersWithWhatItHas) {
  cv::Mat page(1500, 2000, CV_8UC1, cv::Scalar(255));
  for (int y = 40; y < page.rows; y += 40)
    for (int x = 10; x + 300 < page.cols; x += 330)
      cv::putText(page, std::to_string(100'000'000U + 7919U * static_cast<unsigned>(x * y)), {x, y},
                  cv::FONT_HERSHEY_SIMPLEX, 1, 0, 2);
  const Bitmap picture = toBitmap(page);
  const OnnxTextEngine engine({.modelDirectory = models});
  engine.load();
  const auto read = [&](const WorkLimit& limit) {
    TextRequest request;
    request.limit = limit;
    return engine.recognize(picture, request).size();
  };
  const auto begin = std::chrono::steady_clock::now();
  const std::size_t some = read({.deadline = begin + std::chrono::milliseconds(1500), .stop = {}});
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "the whole page takes far longer";
  EXPECT_LT(some, 180U) << "the whole page has more";

  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(read({.stop = stop.get_token()}), 0U);
}

}  // namespace
}  // namespace pravik
