#include "backends/opencv/OpenCvImageRenderer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "backends/opencv/Mat.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using Color = std::array<int, 3>;  // blue, green, red

Color colorAt(const Bitmap& bitmap, int x, int y) {
  const std::uint8_t* pixel = bitmap.row(y) + 4 * x;
  return {pixel[0], pixel[1], pixel[2]};
}

Bitmap rendered(const Bitmap& bitmap, const std::vector<ImageFilter>& filters) {
  return OpenCvImageRenderer().render(bitmap, filters).value();
}

/// The colour of a plain picture after one filter.
Color changed(const Color& color, const ImageFilter& filter) {
  const auto byte = [&](std::size_t channel) { return static_cast<std::uint8_t>(color[channel]); };
  return colorAt(rendered(test::plainPicture(3, 3, byte(0), byte(1), byte(2)), {filter}), 1, 1);
}

int changedGrey(int grey, const ImageFilter& filter) {
  return rendered(test::greyPicture(3, 3, [&](int, int) { return grey; }), {filter}).row(1)[1];
}

/// A grey picture with a dark and a bright half, side by side.
Bitmap step(int width, int height, int dark, int bright) {
  return test::greyPicture(width, height, [=](int x, int) { return x < width / 2 ? dark : bright; });
}

TEST(ColorControls, FollowTheOrderSaturationBrightnessContrast) {
  const struct {
    const char* what;
    Color color;
    ColorControls controls;
    Color expected;
  } cases[] = {
      {"half the saturation", {0, 255, 0}, {.saturation = 0.5}, {91, 219, 91}},
      {"brightness is clamped", {100, 250, 140}, {.brightness = 0.1}, {126, 255, 166}},
      {"contrast turns about the middle", {100, 127, 160}, {.contrast = 2}, {72, 127, 193}},
      {"brightness comes before contrast", {100, 100, 100}, {.contrast = 2, .brightness = 0.1}, {124, 124, 124}},
      {"saturation comes before both",
       {0, 100, 0},
       {.contrast = 2, .brightness = 0.2, .saturation = 0},
       {118, 118, 118}},
  };
  for (const auto& [what, color, controls, expected] : cases) {
    const Color result = changed(color, controls);
    for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(result[c], expected[c], 1) << what << " channel " << c;
  }
  EXPECT_NEAR(changedGrey(100, ColorControls{.contrast = 2, .brightness = 0.1, .saturation = 0.3}), 124, 1);
}

TEST(SharpenLuminance, WidensTheStepBetweenDarkAndBright) {
  for (const double radius : {0.0, 0.5, 3.0}) {
    const Bitmap sharp = rendered(step(40, 9, 100, 150), {SharpenLuminance{.sharpness = 0.8, .radius = radius}});
    const std::uint8_t* row = sharp.row(4);
    EXPECT_LT(row[19], 95) << "radius " << radius;
    EXPECT_GT(row[20], 155) << "radius " << radius;
    const int far = radius > 0 ? 17 : 1;
    EXPECT_EQ(row[19 - far], 100) << "radius " << radius;
    EXPECT_EQ(row[20 + far], 150) << "radius " << radius;
  }
}

TEST(SharpenLuminance, AddsTheSameToAllChannels) {
  cv::Mat picture(9, 20, CV_8UC4, cv::Scalar(30, 90, 120, 255));
  picture.colRange(10, 20) = cv::Scalar(80, 140, 170, 255);
  const Bitmap sharp = rendered(toBitmap(picture), {SharpenLuminance{.sharpness = 1}});
  const Color left = colorAt(sharp, 9, 4);
  EXPECT_LT(left[0], 25);
  EXPECT_EQ(left[1] - left[0], 60);
  EXPECT_EQ(left[2] - left[1], 30);
}

TEST(Rendering, InOneGoEqualsFilterAfterFilterWithoutSeams) {
  // Rows are rendered in bands; where all rows are alike, a seam would show.
  const Bitmap columns = test::greyPicture(30, 300, [](int x, int) { return x * 37 % 256; });
  const ColorControls colors{.contrast = 1.3, .brightness = 0.05, .saturation = 0.7};
  const SharpenLuminance sharpening{.sharpness = 0.6, .radius = 2};
  const Bitmap once = rendered(columns, {colors, sharpening});
  const Bitmap twice = rendered(rendered(columns, {colors}), {sharpening});
  for (int y = 0; y < once.height(); ++y) {
    EXPECT_TRUE(std::equal(once.row(y), once.row(y) + 30, twice.row(y))) << y;
    EXPECT_TRUE(std::equal(once.row(y), once.row(y) + 30, once.row(0))) << y;
  }
  // The other way round the contrast sees the sharpened picture.
  const Bitmap reversed =
      rendered(step(40, 9, 20, 235), {SharpenLuminance{.sharpness = 0.6}, ColorControls{.contrast = 0.5}});
  EXPECT_EQ(reversed.row(4)[19], 64);
}

TEST(Rendering, ReadsCropsOfLargerPictures) {
  const Bitmap crop = step(40, 30, 50, 90).crop({.x = 16, .y = 5, .width = 10, .height = 12});
  const Bitmap result = rendered(crop, {ColorControls{.brightness = 0.2}});
  ASSERT_EQ(result.width(), 10);
  ASSERT_EQ(result.height(), 12);
  EXPECT_EQ(result.row(11)[3], 101);
  EXPECT_EQ(result.row(11)[4], 141);
}

/// Corners in pixels from the lower left.
Quadrilateral quad(Point topLeft, Point topRight, Point bottomRight, Point bottomLeft) {
  return {.topLeft = topLeft, .topRight = topRight, .bottomLeft = bottomLeft, .bottomRight = bottomRight};
}

TEST(PerspectiveCorrection, CutsAndStraightens) {
  // An upright rectangle is that part of the picture, to the pixel.
  const Bitmap fine = test::greyPicture(60, 50, [](int x, int y) { return 4 * x + (y % 2) * 10; });
  const Bitmap part = rendered(fine, {PerspectiveCorrection{quad({10, 45}, {40, 45}, {40, 25}, {10, 25})}});
  ASSERT_EQ(part.width(), 30);
  ASSERT_EQ(part.height(), 20);
  for (int y = 0; y < 20; ++y) EXPECT_TRUE(std::equal(part.row(y), part.row(y) + 30, fine.row(y + 5) + 10)) << y;

  // A trapezium whose four quarters have their own grey; the longer of opposite sides give the size.
  const Bitmap quarters = test::greyPicture(300, 200, [](int x, int y) { return (x < 150 ? 50 : 150) + y / 110 * 50; });
  const Bitmap straight = rendered(quarters, {PerspectiveCorrection{quad({60, 160}, {240, 140}, {280, 20}, {20, 40})}});
  ASSERT_EQ(straight.width(), 261);
  ASSERT_EQ(straight.height(), 126);
  EXPECT_EQ(straight.row(3)[3], 50);
  EXPECT_EQ(straight.row(3)[257], 150);
  EXPECT_EQ(straight.row(122)[3], 100);
  EXPECT_EQ(straight.row(122)[257], 200);
}

TEST(Rendering, GivesNothingForValuesThatMakeNoSense) {
  const double nan = std::nan(""), endless = std::numeric_limits<double>::infinity();
  const auto correction = [](Point topLeft, Point topRight, Point bottomRight, Point bottomLeft) {
    return PerspectiveCorrection{quad(topLeft, topRight, bottomRight, bottomLeft)};
  };
  const std::pair<const char*, ImageFilter> cases[] = {
      {"no contrast", ColorControls{.contrast = nan}},
      {"endless brightness", ColorControls{.brightness = endless}},
      {"endless sharpness", SharpenLuminance{.sharpness = endless}},
      {"less than no radius", SharpenLuminance{.sharpness = 1, .radius = -1}},
      {"enormous radius", SharpenLuminance{.sharpness = 1, .radius = 1e9}},
      {"one point", correction({5, 5}, {5, 5}, {5, 5}, {5, 5})},
      {"a line", correction({0, 0}, {10, 0}, {20, 0}, {30, 0})},
      {"crossed sides", correction({0, 40}, {40, 0}, {40, 40}, {0, 0})},
      {"a dent", correction({0, 40}, {40, 40}, {10, 30}, {0, 0})},
      {"not a number", correction({nan, 40}, {40, 40}, {40, 0}, {0, 0})},
      {"infinite", correction({-endless, 40}, {endless, 40}, {40, 0}, {0, 0})},
      {"enormous", correction({-1e5, 1e5}, {1e5, 1e5}, {1e5, -1e5}, {-1e5, -1e5})},
  };
  for (const auto& [what, filter] : cases)
    EXPECT_FALSE(OpenCvImageRenderer().render(step(50, 50, 10, 200), std::span(&filter, 1))) << what;
}

TEST(GreyThumbnail, AveragesAreasAndKeepsWhereThingsAre) {
  const OpenCvImageRenderer renderer;
  // Fine stripes come out as their mean, wherever the pixels of the thumbnail begin.
  for (const int width : {64, 100, 301, 1600}) {
    const Bitmap stripes = test::greyPicture(width, 90, [](int x, int) { return x % 2 == 0 ? 0 : 200; });
    const Bitmap thumbnail = renderer.greyThumbnail(stripes, 8, 8).value();
    for (int x = 0; x < 8; ++x) EXPECT_NEAR(thumbnail.row(3)[x], 100, 9) << width;
  }
  for (const auto& [width, height] : {std::pair{1000, 30}, std::pair{30, 1000}, std::pair{3, 2}, std::pair{64, 64}}) {
    const Bitmap thumbnail = renderer.greyThumbnail(step(width, height, 20, 220), 64, 64).value();
    EXPECT_NEAR(thumbnail.row(5)[3], 20, 2) << width;
    EXPECT_NEAR(thumbnail.row(60)[61], 220, 2) << width;
  }
  // The last row and column of an odd size count like all others.
  const auto edged = [](int x, int y) { return x == 256 || y == 258 ? 0 : 240; };
  const Bitmap edges = renderer.greyThumbnail(test::greyPicture(257, 259, edged), 64, 64).value();
  for (const int value : {edges.row(5)[63], edges.row(63)[5], edges.row(63)[63]}) EXPECT_LT(value, 225);
  EXPECT_EQ(edges.row(62)[62], 240);
  EXPECT_EQ(renderer.greyThumbnail(test::plainPicture(200, 100, 0, 255, 0), 64, 64).value().row(9)[9], 182);
  EXPECT_FALSE(renderer.greyThumbnail(step(8, 8, 10, 200), 0, 64));
}

}  // namespace
}  // namespace pravik
