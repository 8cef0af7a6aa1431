#include "Core/ImagePreprocessor.h"

#include <gmock/gmock.h>

#include <cmath>

#include "support/Fakes.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using test::FakeRectangleDetector;
using test::FakeRenderer;
using Scene = ImagePreprocessor::Scene;
using Stats = ImagePreprocessor::Stats;

constexpr double close = 1e-9;

TEST(ImagePreprocessorParams, FollowTheStatisticsAndTheKindOfCard) {
  const std::vector<std::tuple<const char*, Stats, Scene, ImagePreprocessor::AdaptiveParams>> cases{
      {"gentle at the inclusive lower bounds", {0.35, 0.15, 0.44, 0.44}, Scene::idCard, {1.03, 0, 0.15, 0.92, "轻柔"}},
      {"gentle at the inclusive upper bound", {0.7, 0.15, 0, 0}, Scene::bankCard, {1.03, 0, 0.25, 0.92, "轻柔"}},
      {"a dark share of 0.45 is not gentle", {0.5, 0.2, 0.45, 0}, Scene::idCard, {1.05, 0, 0.3, 0.85, "自适应"}},
      {"uniform grey", {0.5, 0, 0, 0}, Scene::idCard, {1.245, 0, 0.5, 0.85, "自适应"}},
      {"uniform grey, bank card", {0.5, 0, 0, 0}, Scene::bankCard, {1.275, 0, 0.6, 0.7, "自适应"}},
      {"black", {0, 0, 1, 0}, Scene::idCard, {1.325, 0.15, 0.5, 0.85, "自适应"}},
      {"black, bank card, clamped", {0, 0, 1, 0}, Scene::bankCard, {1.35, 0.15, 0.6, 0.7, "自适应"}},
      {"white", {1, 0, 0, 1}, Scene::idCard, {1.305, -0.15, 0.5, 0.85, "自适应"}},
      {"contrast keeps its base at a spread of 0.3",
       {0.2, 0.3, 0.5, 0},
       Scene::idCard,
       {1.05, 0.15, 0.2, 0.85, "自适应"}},
      {"contrast falls above a spread of 0.3", {0.2, 0.31, 0.5, 0}, Scene::idCard, {1.02, 0.15, 0.2, 0.85, "自适应"}},
      {"between the two pairs of thresholds", {0.2, 0.13, 0, 0}, Scene::idCard, {1.076, 0.15, 0.3, 0.85, "自适应"}},
  };
  for (const auto& [what, stats, scene, expected] : cases) {
    SCOPED_TRACE(what);
    const auto params = ImagePreprocessor::computeParams(stats, scene);
    EXPECT_NEAR(params.contrast, expected.contrast, close);
    EXPECT_NEAR(params.brightness, expected.brightness, close);
    EXPECT_NEAR(params.sharpness, expected.sharpness, close);
    EXPECT_NEAR(params.saturation, expected.saturation, close);
    EXPECT_EQ(params.mode, expected.mode);
  }
}

struct Preprocessor {
  std::shared_ptr<FakeRenderer> renderer = std::make_shared<FakeRenderer>();
  std::shared_ptr<FakeRectangleDetector> detector = std::make_shared<FakeRectangleDetector>();
  ImagePreprocessor preprocessor{renderer, detector};
};

TEST(ImagePreprocessorStats, CountStrictlyDarkAndBrightPixels) {
  Preprocessor p;
  const Stats ordinary{0.5, 0.2, 0.2, 0.2};
  EXPECT_EQ(p.preprocessor.analyzeImage(test::plainPicture(2, 2, 0, 0, 0)), ordinary) << "it could not be sampled";
  // A quarter each of black, 63 (below 0.25), 64 (above it) and 192 (above 0.75).
  constexpr std::uint8_t quarters[] = {0, 63, 64, 192};
  p.renderer->thumbnail = test::greyPicture(64, 64, [&](int x, int) { return quarters[x / 16]; });
  const Stats stats = p.preprocessor.analyzeImage(test::plainPicture(2, 2, 0, 0, 0));
  EXPECT_NEAR(stats.mean, (0 + 63 + 64 + 192) / 4.0 / 255, close);
  EXPECT_DOUBLE_EQ(stats.darkRatio, 0.5);
  EXPECT_DOUBLE_EQ(stats.brightRatio, 0.25);
}

TEST(ImagePreprocessorEnhancement, TurnsThePhotoUprightAndAppliesThePresetOnce) {
  Preprocessor p;
  const Image image{.bitmap = test::plainPicture(30, 10, 1, 2, 3), .orientation = ImageOrientation::right};
  const auto result = p.preprocessor.preprocessForBankCardEnhanced(image);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->width(), 10);
  EXPECT_EQ(result->height(), 30);
  ASSERT_EQ(p.renderer->filters.size(), 1U);
  EXPECT_EQ(p.renderer->filters[0],
            (std::vector<ImageFilter>{ColorControls{1.35, 0.0, 1.0}, SharpenLuminance{0.75, 0.0}}));
}

TEST(ImagePreprocessorEnhancement, GivesNothingWithoutPixelsOrWhenTheRenderingFails) {
  Preprocessor p;
  EXPECT_FALSE(p.preprocessor.preprocessForIDCard(Image{}));
  p.renderer->rendered = [](const Bitmap&) { return std::nullopt; };
  EXPECT_FALSE(p.preprocessor.preprocessForIDCard({.bitmap = test::plainPicture(4, 4, 0, 0, 0)}));
  EXPECT_TRUE(p.preprocessor.preprocessCardNumberROI(test::plainPicture(4, 4, 0, 0, 0)).empty());
  EXPECT_FALSE(ImagePreprocessor(nullptr, nullptr).preprocessForIDCard({.bitmap = test::plainPicture(4, 4, 0, 0, 0)}));
}

TEST(ImagePreprocessorEnhancement, LeavesOutOnlyTheVariantsThatFail) {
  Preprocessor p;
  int call = 0;
  p.renderer->rendered = [&](const Bitmap& bitmap) { return ++call == 2 ? std::nullopt : std::optional(bitmap); };
  const auto variants = p.preprocessor.preprocessCardNumberROI(test::plainPicture(4, 4, 0, 0, 0));
  ASSERT_EQ(variants.size(), 2U);
  EXPECT_EQ(variants[0].label, "ROI-高对比");
  EXPECT_EQ(variants[1].label, "ROI-提亮");
}

/// A card turned a little: its corners are up to 0.1 away from those of its bounding box.
const RectangleObservation tiltedCard{{{0.1, 0.8}, {0.8, 0.9}, {0.2, 0.1}, {0.9, 0.2}}, {0.1, 0.1, 0.8, 0.8}, 0.9F};
const RectangleObservation aTenth{{{0.1, 0.4}, {0.3, 0.6}, {0.2, 0}, {0.35, 0.1}}, {0.1, 0, 0.25, 0.4}, 0.9F};
const RectangleObservation wholeFrame{{{0, 1}, {1, 1}, {0, 0}, {1, 0}}, {0, 0, 1, 1}, 0.9F};

TEST(PerspectiveCorrectionAttempt, StraightensOnlyALargeTiltedCardWithAPlausibleResult) {
  const std::vector<std::tuple<const char*, std::vector<RectangleObservation>, int, int, bool>> cases{
      {"tilted card", {tiltedCard}, 600, 380, true},
      {"no rectangle", {}, 600, 380, false},
      {"covers a tenth", {aTenth}, 600, 380, false},
      {"square to the frame", {wholeFrame}, 600, 380, false},
      {"portrait result", {tiltedCard}, 400, 500, false},
      {"result at the aspect's bound", {tiltedCard}, 600, 500, true},
      {"result too narrow", {tiltedCard}, 249, 100, false},
  };
  const Image photo{.bitmap = test::plainPicture(1000, 800, 0, 0, 0)};
  for (const auto& [what, rectangles, width, height, corrected] : cases) {
    Preprocessor p;
    p.detector->rectangles = rectangles;
    p.renderer->rendered = [&](const Bitmap&) { return test::plainPicture(width, height, 0, 0, 0); };
    EXPECT_EQ(p.preprocessor.attemptPerspectiveCorrection(photo).has_value(), corrected) << what;
  }
}

TEST(PerspectiveCorrectionAttempt, TellsWhyItWasGivenUp) {
  const Image photo{.bitmap = test::plainPicture(1000, 800, 0, 0, 0)};
  Preprocessor broken;
  broken.detector->fails = true;
  Preprocessor unrendered;
  unrendered.detector->rectangles = {tiltedCard};
  unrendered.renderer->rendered = [](const Bitmap&) { return std::nullopt; };
  const ImagePreprocessor withoutDetector(broken.renderer, nullptr), withoutRenderer(nullptr, broken.detector);
  for (const auto& [preprocessor, reason] : std::vector<std::pair<const ImagePreprocessor*, const char*>>{
           {&broken.preprocessor, "透视矫正: 矩形检测失败（the detector is broken），跳过"},
           {&unrendered.preprocessor, "透视矫正: 渲染失败，跳过"},
           {&withoutDetector, "透视矫正: 没有可用的矩形检测器，跳过"},
           {&withoutRenderer, "透视矫正: 没有可用的图像渲染器，跳过"}}) {
    const test::LogCapture log(OCRLogger::Level::debug);
    EXPECT_FALSE(preprocessor->attemptPerspectiveCorrection(photo));
    EXPECT_THAT(log.lines, testing::Contains(testing::HasSubstr(reason)));
  }
  EXPECT_FALSE(broken.preprocessor.attemptPerspectiveCorrection(Image{}));
}

TEST(PerspectiveCorrectionAttempt, HandsTheCornersOverInPixelsFromTheLowerLeft) {
  Preprocessor p;
  p.detector->rectangles = {tiltedCard};
  (void)p.preprocessor.attemptPerspectiveCorrection({.bitmap = test::plainPicture(1000, 500, 0, 0, 0)});
  ASSERT_EQ(p.renderer->filters.size(), 1U);
  const auto correction = std::get<PerspectiveCorrection>(p.renderer->filters[0].at(0));
  EXPECT_NEAR(correction.corners.topLeft.x, 100, close);
  EXPECT_NEAR(correction.corners.topLeft.y, 400, close);
  EXPECT_NEAR(correction.corners.bottomRight.x, 900, close);
  EXPECT_NEAR(correction.corners.bottomRight.y, 100, close);
}

TEST(CardNumberBand, IsCutWhereTheCardCarriesItsNumber) {
  const ImagePreprocessor preprocessor(nullptr, nullptr);
  const auto size = [](const std::optional<Bitmap>& bitmap) {
    return bitmap ? std::pair(bitmap->width(), bitmap->height()) : std::pair(0, 0);
  };
  const Bitmap lying = test::plainPicture(1000, 600, 0, 0, 0);
  const Bitmap standing = test::plainPicture(600, 1000, 0, 0, 0);
  const Bitmap small = test::plainPicture(100, 40, 0, 0, 0);

  // 266.4 to 466.2: the cut takes every pixel that the fractional band touches.
  EXPECT_EQ(size(preprocessor.cropToCardNumberRegion(lying)), std::pair(960, 201));
  EXPECT_EQ(size(preprocessor.cropToCardNumberRegion(standing)), std::pair(201, 960));
  EXPECT_EQ(size(preprocessor.cropToCardNumberRegion(small)), std::pair(0, 0));

  EXPECT_EQ(size(preprocessor.cropToCardNumberRegionDynamic(lying, 0.5)).first, 960);
  EXPECT_NEAR(size(preprocessor.cropToCardNumberRegionDynamic(lying, 0.5)).second, 108, 1);
  EXPECT_NEAR(size(preprocessor.cropToCardNumberRegionDynamic(lying, 0.85)).second, 72, 1);
  EXPECT_NEAR(size(preprocessor.cropToCardNumberRegionDynamic(standing, 0.5)).first, 108, 1);
  for (const double centre : {0.1, -1.0, 2.0, std::nan("")})
    EXPECT_FALSE(preprocessor.cropToCardNumberRegionDynamic(lying, centre)) << centre;
}

}  // namespace
}  // namespace pravik
