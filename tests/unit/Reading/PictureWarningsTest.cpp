#include "Reading/PictureWarnings.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <numbers>

namespace pravik {
namespace {

using enum ReadingWarning;

constexpr double desk = 6;  // millimetres around the card

/// A card with squares for print, made up millimetre by millimetre.
struct MadeUp {
  double scale = 12;  // dots a millimetre
  double edge = 0.2;  // of the print, in millimetres
  int ground = 200;
  int print = 60;
  double tint = 0.2;    // how much bluer the upper third is
  Rect light = {};      // white, in millimetres of the card
  double wave = 0;      // levels of a grid
  double period = 4;    // of the grid, in pixels
  double cut = 0;       // millimetres of the card beyond the right edge
  bool isFound = true;  // the outline
  bool isGrey = false;  // the format
};

/// How much of the ground is printed over: squares that are not alike, for what is regular is a grid.
double printedAt(double x, double y, double edge) {
  const double column = std::floor(x / 4);
  const double row = std::floor(y / 4);
  const double half = 0.7 + 0.1 * std::fmod(7 * column * column + 5 * row * row + column * row, 6);
  const auto within = [&](double place) { return std::clamp(0.5 + (half - std::abs(place - 2)) / edge, 0.0, 1.0); };
  return within(x - 4 * column) * within(y - 4 * row);
}

int levelAt(const MadeUp& made, double x, double y, double share) {
  if (x < 0 || y < 0 || x >= 85.6 || y >= 54) return 20;
  if (made.light.contains({x, y})) return 255;
  const bool isPrinted = x > 8 && x < 76 && y > 8 && y < 48;
  const double printed = isPrinted ? printedAt(x, y, made.edge) : 0;
  return static_cast<int>((made.ground + printed * (made.print - made.ground)) * (y < 18 ? 1 - share : 1));
}

Bitmap pictureOf(const MadeUp& made) {
  const int width = static_cast<int>((85.6 + 2 * desk - (made.cut > 0 ? desk + made.cut : 0)) * made.scale);
  const int height = static_cast<int>((54 + 2 * desk) * made.scale);
  const PixelFormat format = made.isGrey ? PixelFormat::grey8 : PixelFormat::bgra8;
  const int channels = bytesPerPixel(format);
  auto pixels = allocatePixels(format, width, height);
  std::uint8_t* pixel = pixels.get();
  std::uint32_t noise = 1;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x, pixel += channels)
      for (int channel = 0; channel < channels; ++channel) {
        noise = noise * 1664525U + 1013904223U;
        const int level = levelAt(made, x / made.scale - desk, y / made.scale - desk, channel == 0 ? 0 : made.tint);
        const double grid = made.wave * std::cos(2 * std::numbers::pi * (x + 0.3 * y) / made.period);
        pixel[channel] = static_cast<std::uint8_t>(
            level == 255 ? 255 : std::clamp(level + grid + static_cast<double>(noise >> 30U) - 2, 0.0, 255.0));
      }
  return {format, width, height, std::ptrdiff_t{width} * channels, pixels};
}

Quadrilateral corners(const Rect& rect) {
  return {{rect.x, rect.y}, {rect.maxX(), rect.y}, {rect.x, rect.maxY()}, {rect.maxX(), rect.maxY()}};
}

PictureFindings findingsOf(const MadeUp& made) {
  const auto placed = [&](double x, double y, double width, double height) {
    return corners({(x + desk) * made.scale, (y + desk) * made.scale, width * made.scale, height * made.scale});
  };
  const Bitmap picture = pictureOf(made);
  if (made.isFound) return lookedAt({picture, placed(0, 0, 85.6 - made.cut, 54), {}});
  return lookedAt({picture, std::nullopt, {placed(8, 8, 50, 5), placed(8, 24, 50, 5), placed(8, 43, 50, 5)}});
}

TEST(PictureWarnings, AreGivenBeyondTheirThresholdsOnly) {
  const std::vector<std::tuple<const char*, MadeUp, std::vector<ReadingWarning>>> cases{
      {"nothing the matter", {}, {}},
      {"no outline", {.isFound = false}, {}},
      {"edges wide for the print", {.edge = 0.45}, {blurred}},
      {"edges as sharp as a camera's", {.edge = 0.3}, {}},
      {"a small picture has wide edges", {.scale = 5, .edge = 0.5}, {}},
      {"a small picture out of focus", {.scale = 5, .edge = 1}, {blurred}},
      {"less light than a group of digits", {.light = {20, 20, 10, 7}}, {}},
      {"more light than that", {.light = {20, 20, 10, 8}}, {glare}},
      {"light over a third of the card", {.light = {0, 36, 85.6, 18}}, {glare}},
      {"light over more than that", {.light = {0, 34, 85.6, 20}}, {overexposed}},
      {"levels near the noise", {.ground = 70, .print = 20}, {dark}},
      {"a dark card", {.ground = 40, .print = 90}, {}},
      {"dots enough", {.scale = 4.1}, {}},
      {"too few dots", {.scale = 3.9}, {tooSmall}},
      {"the outline stops at the edge", {.cut = 10}, {cutOff}},
      {"no outline, the ground goes on to the edge", {.cut = 10, .isFound = false}, {cutOff}},
      {"text at the edge", {.cut = 27.8, .isFound = false}, {cutOff}},
      {"little colour", {.tint = 0.06}, {}},
      {"no colour", {.tint = 0}, {greyCopy}},
      {"a format without colours", {.isGrey = true}, {}},
      {"a fine grid", {.wave = 12}, {screen}},
      {"a grid as coarse as print", {.wave = 12, .period = 12}, {}},
  };
  for (const auto& [what, made, expected] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(findingsOf(made).warnings, expected);
  }
}

TEST(PictureWarnings, TellWhereLightIsReflectedAndHowLargeTheCardIs) {
  const PictureFindings findings = findingsOf({.scale = 10, .light = {20, 30, 15, 10}});
  ASSERT_EQ(findings.glare.size(), 1U);
  EXPECT_NEAR(findings.glare[0].x, 260, 10);
  EXPECT_NEAR(findings.glare[0].y, 360, 10);
  EXPECT_NEAR(findings.glare[0].width, 150, 10);
  EXPECT_NEAR(findings.glare[0].height, 100, 10);
  EXPECT_NEAR(findings.dotsPerMillimetre, 10, 0.1);
}

TEST(PictureWarnings, WithstandWhatIsNoCard) {
  const Bitmap speck = pictureOf({.scale = 0.02});
  EXPECT_EQ(lookedAt({speck, std::nullopt, {}}).dotsPerMillimetre, 0);
  EXPECT_THAT(lookedAt({speck, corners({0, 0, 0, 0}), {}}).glare, testing::IsEmpty());
  const Bitmap picture = pictureOf({.scale = 5});
  EXPECT_GT(lookedAt({picture, std::nullopt, {corners({10, 10, 400, 0.01})}}).dotsPerMillimetre, 0) << "a line";
  EXPECT_EQ(lookedAt({picture, std::nullopt, {corners({-90, 10, 50, 9})}}).dotsPerMillimetre, 0) << "beyond it";
}

}  // namespace
}  // namespace pravik
