#include "Reading/NumberRow.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/Fakes.h"

namespace pravik {
namespace {

constexpr std::string_view number = "6222021234567894";

/// Sees a number where the picture is dark, the surer the darker the whole cut is: the row is read best when it is cut
/// tight.
class DarkRowEngine final : public test::FakeTextEngine {
 public:
  mutable std::size_t looks = 0;

  bool readsDigits() const override { return true; }
  std::vector<SeenDigits> readDigits(const std::vector<Bitmap>& rows, DigitReader /*reader*/,
                                     const WorkLimit& /*limit*/) const override {
    std::vector<SeenDigits> seen;
    for (const Bitmap& row : rows) seen.push_back(digitsOn(row));
    looks += rows.size();
    return seen;
  }

 private:
  static SeenDigits digitsOn(const Bitmap& row) {
    double dark = 0;
    for (int y = 0; y < row.height(); ++y)
      for (int x = 0; x < row.width(); ++x) dark += row.row(y)[x] < 128 ? 1 : 0;
    const double share = dark / (row.width() * row.height());
    if (share < 0.3) return {};
    SeenDigits digits;
    for (std::size_t i = 0; i < number.size(); ++i) {
      digits.push_back({.position = 0.1 + 0.05 * static_cast<double>(i), .probabilities = {}});
      digits.back().probabilities[static_cast<std::size_t>(number[i] - '0')] = static_cast<float>(share);
    }
    return digits;
  }
};

constexpr int cardWidth = 400;
constexpr int cardHeight = 252;
constexpr int rowMiddle = 151;
constexpr int rowHeight = 22;

/// A white card with a dark band where its number stands, falling to the right by `slope`.
Bitmap cardWithARow(double slope) {
  const auto pixels = allocatePixels(PixelFormat::grey8, cardWidth, cardHeight);
  for (int y = 0; y < cardHeight; ++y)
    for (int x = 0; x < cardWidth; ++x) {
      const double middle = rowMiddle + slope * (x - cardWidth / 2.0);
      pixels.get()[y * cardWidth + x] = std::abs(y - middle) < rowHeight / 2.0 ? 20 : 230;
    }
  return {PixelFormat::grey8, cardWidth, cardHeight, cardWidth, pixels};
}

ReadingParts partsWith(std::shared_ptr<const TextEngine> engine) {
  return {.recognizer = TextRecognizer(std::move(engine), nullptr),
          .preprocessor = ImagePreprocessor(nullptr, nullptr),
          .barcodeDetector = nullptr,
          .debugPictures = nullptr,
          .accumulator = nullptr,
          .limit = {}};
}

TEST(NumberRow, IsFoundAndCutTightWithoutAnyPieceOfIt) {
  for (const double slope : {0.0, 0.03}) {
    const auto engine = std::make_shared<DarkRowEngine>();
    const auto row = readNumberRow(partsWith(engine), cardWithARow(slope), std::nullopt, {});
    ASSERT_TRUE(row) << slope;
    EXPECT_EQ(row->voted.digits, number);
    EXPECT_TRUE(row->voted.isSound);
    EXPECT_NEAR(row->strip.middle.y, rowMiddle, 4) << slope;
    EXPECT_NEAR(row->strip.slope, slope, 0.013);
    EXPECT_LE(row->strip.height, 1.2 * rowHeight);
  }
}

TEST(NumberRow, IsFoundOnACardThatFillsAPartOfThePicture) {
  const auto pixels = allocatePixels(PixelFormat::grey8, 2 * cardWidth, 2 * cardHeight);
  std::fill_n(pixels.get(), 4 * cardWidth * cardHeight, std::uint8_t{230});
  constexpr int left = 300, top = 40;
  for (int y = top + rowMiddle - rowHeight / 2; y < top + rowMiddle + rowHeight / 2; ++y)
    std::fill_n(pixels.get() + y * 2 * cardWidth + left, cardWidth, std::uint8_t{20});
  const Bitmap photo(PixelFormat::grey8, 2 * cardWidth, 2 * cardHeight, 2 * cardWidth, pixels);
  const Quadrilateral outline{
      {left, top}, {left + cardWidth, top}, {left, top + cardHeight}, {left + cardWidth, top + cardHeight}};
  const auto parts = partsWith(std::make_shared<DarkRowEngine>());
  EXPECT_FALSE(readNumberRow(parts, photo, std::nullopt, {}));
  const auto row = readNumberRow(parts, photo, outline, {});
  ASSERT_TRUE(row);
  EXPECT_NEAR(row->strip.middle.y, top + rowMiddle, 4);
  EXPECT_NEAR(row->strip.middle.x, left + cardWidth / 2.0, cardWidth / 10.0);
}

TEST(NumberRow, IsConfirmedByOneLookWhenThePiecesAreSound) {
  const auto engine = std::make_shared<DarkRowEngine>();
  const Observations pieces{{"6222 0212", 0.9F, {0.1, 0.35, 0.35, 0.1}}, {"3456 7894", 0.9F, {0.5, 0.35, 0.35, 0.1}}};
  const auto row = readNumberRow(partsWith(engine), cardWithARow(0), std::nullopt, pieces);
  ASSERT_TRUE(row);
  EXPECT_TRUE(row->voted.isSound);
  EXPECT_EQ(engine->looks, 1U);
}

TEST(NumberRow, IsAbsentWithoutDigitsAndWithAnEngineThatReadsNone) {
  const auto pixels = allocatePixels(PixelFormat::grey8, cardWidth, cardHeight);
  std::fill_n(pixels.get(), cardWidth * cardHeight, std::uint8_t{230});
  const Bitmap blank(PixelFormat::grey8, cardWidth, cardHeight, cardWidth, pixels);
  EXPECT_FALSE(readNumberRow(partsWith(std::make_shared<DarkRowEngine>()), blank, std::nullopt, {}));
  EXPECT_FALSE(readNumberRow(partsWith(std::make_shared<test::FakeTextEngine>()), cardWithARow(0), std::nullopt, {}));
  EXPECT_FALSE(readNumberRow(partsWith(nullptr), cardWithARow(0), std::nullopt, {}));
}

TEST(NumberRow, TakesThePlaceOfThePiecesItCovers) {
  NumberRow row{.strip = {{200, 151}, 360, 22, 0}, .voted = {}, .looks = {}};
  row.voted.digits = number;
  row.voted.agreement.assign(number.size(), 0.75);
  const Observations observations{{"BANK", 1, {0.1, 0.8, 0.3, 0.1}},
                                  {"6222 021", 0.8F, {0.1, 0.36, 0.35, 0.08}},
                                  {"3456", 0.8F, {0.6, 0.36, 0.3, 0.08}},
                                  {"12/29", 0.9F, {0.5, 0.2, 0.1, 0.05}}};
  const Observations merged = withNumberRow(observations, row, {cardWidth, cardHeight});
  ASSERT_EQ(merged.size(), 3U);
  EXPECT_EQ(merged[0].text, "BANK");
  EXPECT_EQ(merged[1].text, number);
  EXPECT_FLOAT_EQ(merged[1].confidence, 0.75F);
  EXPECT_EQ(merged[2].text, "12/29");
}

}  // namespace
}  // namespace pravik
