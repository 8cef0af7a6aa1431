#include "UI/FrameQuality.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/Pictures.h"

namespace pravik {
namespace {

constexpr std::uint8_t black = 0, grey = 128, white = 255;

/// A frame of 100 x 100, with padded rows: the samples are 15 columns of 15 rows, from 20 in steps of 4.
VideoFrame frameOf(const std::function<std::uint8_t(int, int)>& brightness, int width = 100, int height = 100) {
  const int stride = 4 * width + 8;
  const auto pixels = allocatePixels(PixelFormat::grey8, stride, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) std::fill_n(pixels.get() + y * stride + 4 * x, 4, brightness(x, y));
  return {Bitmap(PixelFormat::bgra8, width, height, stride, pixels)};
}

VideoFrame plain(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
  return {test::plainPicture(100, 100, blue, green, red)};
}

TEST(FrameQuality, CountsGlareAndDarknessAtTheirLevels) {
  const std::vector<std::tuple<const char*, VideoFrame, FrameQuality>> cases{
      {"an even grey", plain(grey, grey, grey), {0, 0, 0, true}},
      {"luma 246 is glare", plain(246, 246, 246), {1, 0, 1, false}},
      {"just below is not", plain(255, 246, 242), {0, 0, 0, true}},
      {"luma 15 is not dark", plain(15, 15, 15), {0, 0, 0, true}},
      {"just below is", plain(14, 15, 15), {0, 1, 0, false}},
      {"a third of one row",
       frameOf([](int x, int y) { return y == 40 && x >= 20 && x < 40 ? white : grey; }),
       {5 / 225.0F, 0, 5 / 15.0F, false}},
      {"only what is not sampled, and the borders",
       frameOf([](int x, int y) {
         const bool central = x >= 20 && x < 80 && y >= 20 && y < 80;
         return central && x % 4 == 0 && y % 4 == 0 ? grey : white;
       }),
       {0, 0, 0, true}},
      {"no pixels", {}, {0, 0, 0, true}},
      {"one row", frameOf([](int, int) { return white; }, 100, 1), {0, 0, 0, true}},
      {"one column", frameOf([](int, int) { return white; }, 1, 100), {0, 0, 0, true}},
      {"a grey frame", {test::greyPicture(100, 100, [](int, int) { return 246; })}, {1, 0, 1, false}},
  };
  for (const auto& [what, frame, expected] : cases) EXPECT_EQ(FrameQuality::analyze(frame), expected) << what;
}

TEST(FrameQuality, RefusesAtItsLimitsAndHintsAboveItsOwn) {
  // 5 x 4 samples, of which 13 are exactly 65 %.
  const auto ofDarkSamples = [](int count) {
    return FrameQuality::analyze(
        frameOf([=](int x, int y) { return (y - 5) / 4 * 4 + (x - 5) / 4 < count ? black : grey; }, 25, 30));
  };
  EXPECT_EQ(ofDarkSamples(13).darkRatio, 0.65F);
  EXPECT_FALSE(ofDarkSamples(13).isGoodForCapture);
  EXPECT_FALSE(ofDarkSamples(13).qualityHint());
  EXPECT_TRUE(ofDarkSamples(12).isGoodForCapture);

  const std::vector<std::tuple<FrameQuality, const char*>> cases{
      {{0.121F, 1, 0}, "⚠️ 反光严重，请将卡片向前倾斜约10°"},
      {{0, 1, 0.251F}, "⚠️ 反光严重，请将卡片向前倾斜约10°"},
      {{0.12F, 1, 0.25F}, "⚠️ 请稍微倾斜卡片以减少反光"},
      {{0.05F, 0, 0}, "⚠️ 请稍微倾斜卡片以减少反光"},
      {{0, 1, 0.151F}, "⚠️ 请稍微倾斜卡片以减少反光"},
      {{0.04F, 0.651F, 0.15F}, "⚠️ 光线不足，请开启手电筒"},
      {{0.04F, 0.65F, 0.15F}, ""},
  };
  for (const auto& [quality, hint] : cases) EXPECT_EQ(quality.qualityHint().value_or(""), hint);
}

}  // namespace
}  // namespace pravik
