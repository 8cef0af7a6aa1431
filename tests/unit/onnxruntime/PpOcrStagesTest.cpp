#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "backends/DefaultPlatform.h"
#include "backends/onnxruntime/CtcDecoder.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/OnnxTextEngine.h"
#include "backends/onnxruntime/ProbabilityMap.h"
#include "backends/onnxruntime/ReadingOrder.h"
#include "backends/onnxruntime/ReadingText.h"
#include "backends/onnxruntime/SecondLook.h"
#include "backends/onnxruntime/SimplifiedForm.h"
#include "backends/onnxruntime/TextDetector.h"
#include "backends/onnxruntime/WordJoining.h"

namespace pravik {
namespace {

using namespace ppocr;

const std::string models = defaultModelDirectory().string();

TEST(CtcDecoderTest, takesRunsOnceAndSplitsThemAtBlanks) {
  // Three classes: blank, a, b. The steps say a a blank a b.
  const std::vector<float> steps{.1F, .8F, .1F, .0F, .9F, .1F, .9F, .1F, .0F, .3F, .7F, .0F, .2F, .2F, .6F};
  const std::vector<CtcCharacter> expected{{1, .9F, 1}, {1, .7F, 3}, {2, .6F, 4}};
  EXPECT_EQ(decodeCtc(steps, 3), expected);
  EXPECT_TRUE(decodeCtc({}, 3).empty());
}

TEST(ReadingTextTest, makesInterchangeableSpellingsOne) {
  const KeyList keys("阿\n・\n７\n.\n");
  const auto text = [&](std::initializer_list<int> labels) {
    std::vector<CtcCharacter> characters;
    for (int label : labels) characters.push_back({label, 1, 0});
    return readingText(characters, keys);
  };
  EXPECT_EQ(text({1, 2, 1}), "阿·阿");
  EXPECT_EQ(text({3, 4, 3}), "7.7");
}

TEST(ReadingTextTest, putsASpaceWhereLettersStandFurtherApartThanTheOthers) {
  const KeyList keys("A\n7\n阿\n");
  const auto text = [&](std::initializer_list<std::pair<int, int>> labelsAndSteps) {
    std::vector<CtcCharacter> characters;
    for (const auto& [label, step] : labelsAndSteps) characters.push_back({label, 1, step});
    return readingText(characters, keys);
  };
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 10}, {1, 19}, {1, 23}, {1, 27}}), "AAA AAA");
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 10}, {1, 16}, {1, 20}, {1, 24}}), "AAAAAA") << "W and M stand as far apart";
  EXPECT_EQ(text({{2, 2}, {2, 6}, {3, 16}, {2, 20}, {2, 24}, {2, 28}}), "77阿777");
  EXPECT_EQ(text({{1, 2}, {1, 6}, {1, 19}}), "AAA") << "too short to tell";
}

TEST(WordJoiningTest, joinsLatinBlocksThatStandBesideEachOther) {
  const auto line = [](const char* text, float left, float top, float width, float height = 20) {
    return ReadLine{{{{{left, top}, {left + width, top}, {left + width, top + height}, {left, top + height}}}, .9F},
                    {text, .9F}};
  };
  const auto texts = [](const std::vector<ReadLine>& lines) {
    std::vector<std::string> list;
    for (const ReadLine& joined : withWordsJoined(lines)) list.push_back(joined.reading.text);
    return list;
  };
  using Texts = std::vector<std::string>;
  EXPECT_EQ(texts({line("SAN", 112, 1, 40), line("ZHANG", 40, 0, 60), line("FENG", 164, 2, 50)}),
            Texts{"ZHANG SAN FENG"});
  EXPECT_EQ(texts({line("ZHANG", 0, 0, 60), line("UnionPay", 100, 0, 80)}), (Texts{"ZHANG", "UnionPay"})) << "too far";
  EXPECT_EQ(texts({line("ZHANG", 0, 0, 60), line("SAN", 70, 12, 40)}), (Texts{"ZHANG", "SAN"})) << "another row";
  EXPECT_EQ(texts({line("ZHANG", 0, 0, 60), line("SAN", 70, 0, 40, 30)}), (Texts{"ZHANG", "SAN"})) << "higher letters";
  EXPECT_EQ(texts({line("1990", 0, 0, 60), line("年", 65, 0, 20)}), (Texts{"1990", "年"}));
  EXPECT_EQ(withWordsJoined({line("A", 0, 0, 20), line("B", 30, 0, 20)}).front().box.width(), 50);
}

TEST(ReadingTextTest, givesTraditionalFormsAsSimplifiedAndKeepsRareCharacters) {
  for (const auto& [read, given] : {std::pair("強", "强"), {"別", "别"}, {"韻", "韵"}, {"黃", "黄"}})
    EXPECT_EQ(simplifiedForm(read), given);
  // In simplified print, or in no set at all: names have them.
  for (const char* kept : {"乾", "著", "堃", "婳", "仫", "喆"}) EXPECT_EQ(simplifiedForm(kept), kept);
}

TEST(ProbabilityMapTest, putsThePartsOfALineTogether) {
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

TEST(ProbabilityMapTest, findsTiltedLinesAndLeavesNoiseOut) {
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

TEST(ProbabilityMapTest, growsEverySideByAreaOverPerimeter) {
  const cv::RotatedRect whole = grown({{50, 50}, {100, 10}, 30});
  const float distance = 100 * 10 * 1.8F / 220;
  EXPECT_NEAR(whole.size.width, 100 + 2 * distance, 1e-3);
  EXPECT_NEAR(whole.size.height, 10 + 2 * distance, 1e-3);
  EXPECT_EQ(whole.angle, 30);
}

TEST(SecondLookTest, isForNumbersAndDates) {
  for (const char* text : {"11010119900307123X", "2010.05.12-2030.05.12", "6222 0212 3456 7890"})
    EXPECT_TRUE(deservesSecondLook(text)) << text;
  for (const char* text : {"", "姓名张三", "1990年3月7日", "住址上海市南京路100号"})
    EXPECT_FALSE(deservesSecondLook(text)) << text;
}

TEST(SecondLookTest, keepsWhatRepeatsAndBreaksTiesByConfidence) {
  EXPECT_EQ(agreedReading({{"17", .9F}, {"117", .99F}, {"17", .8F}}).text, "17");
  EXPECT_EQ(agreedReading({{"17", .9F}, {"117", .99F}}).text, "117");
  EXPECT_NEAR(agreedReading({{"17", .9F}, {"117", .99F}, {"17", .6F}}).confidence, .5F, 1e-6)
      << "a reading that disagrees counts nothing";
}

TEST(SecondLookTest, countsReadingsThatDifferInSpacesAsTheSame) {
  EXPECT_EQ(agreedReading({{"62228812", .9F}, {"6222~8812", .8F}, {"62223812", .99F}}).text, "62228812");
  EXPECT_EQ(agreedReading({{"GAO SILEI", .9F}, {"GAO SI LEI", .8F}, {"GAO SI LEI", .7F}}).text, "GAO SI LEI");
}

TEST(SecondLookTest, votesForEachCharacterWhenNoReadingRepeats) {
  const TextCandidate voted =
      agreedReading({{"62228812", .9F}, {"62223812 ", .9F}, {"62228817", .9F}, {"6222881", .9F}});
  EXPECT_EQ(voted.text, "62228812");
  EXPECT_NEAR(voted.confidence, .9F * 22 / 32, 1e-6) << "22 of 24 characters agree; the fourth reading counts nothing";
  EXPECT_LT(agreedReading({{"|/~", .6F}, {"i_", .6F}, {"l-.x", .6F}}).confidence, .3F);
}

TEST(TextBoxTest, keepsTheLineWhenTurnedAndGrowsByItsHeight) {
  const TextBox box{{{{10, 10}, {110, 10}, {110, 30}, {10, 30}}}, 1};
  EXPECT_EQ(turned(box).corners[0], cv::Point2f(110, 30));
  EXPECT_EQ(turned(box).corners[1], cv::Point2f(10, 30));
  const TextBox larger = withMargin(box, 0.5F);
  EXPECT_EQ(larger.corners[0], cv::Point2f(0, 0));
  EXPECT_EQ(larger.corners[2], cv::Point2f(120, 40));
}

TEST(ReadingOrderTest, goesByRowsAndThenFromTheLeft) {
  const auto box = [](float x, float y) { return TextBox{{{{x, y}, {x + 50, y}, {x + 50, y + 20}, {x, y + 20}}}, 1}; };
  std::vector<TextBox> boxes{box(100, 4), box(0, 60), box(0, 0)};
  sortInReadingOrder(boxes);
  EXPECT_EQ(boxes[0].corners[0].x, 0);
  EXPECT_EQ(boxes[1].corners[0].x, 100);
  EXPECT_EQ(boxes[2].corners[0].y, 60);
}

TEST(DetectionSizeTest, isAMultipleOfTheModelsStepAndBounded) {
  for (const cv::Size picture : {cv::Size(1, 1), cv::Size(4000, 3000), cv::Size(1500, 270), cv::Size(20000, 3)})
    for (const auto level : {RecognitionLevel::accurate, RecognitionLevel::fast}) {
      const cv::Size size = detectionSize(picture, level);
      EXPECT_EQ(size.width % 32, 0);
      EXPECT_EQ(size.height % 32, 0);
      EXPECT_GT(std::min(size.width, size.height), 0);
      EXPECT_LE(std::max(size.width, size.height), 4096);
    }
}

std::string failureOf(const OnnxTextEngine& engine) {
  try {
    engine.load();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

TEST(OnnxTextEngineTest, namesAMissingAndADamagedModel) {
  const auto folder = std::filesystem::path(testing::TempDir()) / "pravik-models";
  std::filesystem::create_directories(folder);
  const OnnxTextEngine engine({.modelDirectory = folder.string()});
  EXPECT_NE(failureOf(engine).find(detectionModelFile), std::string::npos);
  std::ofstream(folder / detectionModelFile) << "no model";
  EXPECT_NE(failureOf(engine).find("damaged"), std::string::npos);
  EXPECT_FALSE(checkModels(folder.string()).front().isUsable());
  std::filesystem::remove_all(folder);
}

TEST(OnnxTextEngineTest, namesALanguageThatItLacks) {
  const OnnxTextEngine engine({.modelDirectory = models});
  const Bitmap dot(PixelFormat::grey8, 1, 1, 1, allocatePixels(PixelFormat::grey8, 1, 1));
  TextRequest request;
  request.recognitionLanguages = {"en-US", "tlh"};
  try {
    engine.recognize(dot, request);
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_NE(std::string(error.what()).find("tlh"), std::string::npos);
  }
}

TEST(OnnxTextEngineTest, findsNothingOnPicturesOfExtremeShapes) {
  const OnnxTextEngine engine({.modelDirectory = models});
  for (const auto& [width, height] : {std::pair(1, 1), std::pair(3000, 2), std::pair(2, 3000)}) {
    const Bitmap blank(PixelFormat::grey8, width, height, width, allocatePixels(PixelFormat::grey8, width, height));
    EXPECT_TRUE(engine.recognize(blank, {}).empty()) << width << " x " << height;
  }
}

}  // namespace
}  // namespace pravik
