#include "backends/zxing/ZXingBarcodeDetector.h"

#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "OCRScanMode.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using ZXing::BarcodeFormat;

const std::vector<BarcodeSymbology> allTypes = visionSymbologies(OCRScanMode::qrCode);

ZXing::BitMatrix written(BarcodeFormat format, const std::string& payload, int width = 300, int height = 120) {
  ZXing::MultiFormatWriter writer(format);
  if (format == BarcodeFormat::QRCode) writer.setEncoding(ZXing::CharacterSet::UTF8);
  return writer.setMargin(10).encode(payload, width, height);
}

/// The code in the middle of a picture of twice its size.
Bitmap pictureOf(const ZXing::BitMatrix& code, int dark = 0, int light = 255) {
  return test::greyPicture(2 * code.width(), 2 * code.height(), [&](int x, int y) {
    const int column = x - code.width() / 2, row = y - code.height() / 2;
    const bool inside = column >= 0 && row >= 0 && column < code.width() && row < code.height();
    return inside && code.get(column, row) ? dark : light;
  });
}

/// The code turned about the centre of a square picture, with smooth edges and some noise.
Bitmap turnedPicture(const ZXing::BitMatrix& code, double degrees, int side) {
  constexpr int subsamples = 4;
  const double angle = degrees * std::acos(-1.0) / 180, cosine = std::cos(angle), sine = std::sin(angle);
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, 6);
  return test::greyPicture(side, side, [&](int x, int y) {
    int dark = 0;
    for (int i = 0; i < subsamples * subsamples; ++i) {
      const double dx = x + (i % subsamples + 0.5) / subsamples - side / 2.0;
      const double dy = y + (i / subsamples + 0.5) / subsamples - side / 2.0;
      const int column = static_cast<int>(std::floor(dx * cosine + dy * sine + code.width() / 2.0));
      const int row = static_cast<int>(std::floor(dy * cosine - dx * sine + code.height() / 2.0));
      const bool inside = column >= 0 && row >= 0 && column < code.width() && row < code.height();
      dark += inside && code.get(column, row) ? 1 : 0;
    }
    const double level = 220 - 170.0 * dark / (subsamples * subsamples);
    return static_cast<int>(std::clamp(level + noise(random), 0.0, 255.0));
  });
}

std::vector<std::string> payloads(const std::vector<BarcodeObservation>& codes) {
  std::vector<std::string> texts;
  for (const auto& code : codes) texts.push_back(code.payload);
  return texts;
}

struct Code {
  const char* symbology;
  BarcodeFormat format;
  const char* payload;
};

const Code eleven[] = {{"VNBarcodeSymbologyQR", BarcodeFormat::QRCode, "https://example.org/扫码"},
                       {"VNBarcodeSymbologyAztec", BarcodeFormat::Aztec, "Aztec 123"},
                       {"VNBarcodeSymbologyDataMatrix", BarcodeFormat::DataMatrix, "Data Matrix 123"},
                       {"VNBarcodeSymbologyEAN13", BarcodeFormat::EAN13, "6901234567892"},
                       {"VNBarcodeSymbologyEAN8", BarcodeFormat::EAN8, "69012341"},
                       {"VNBarcodeSymbologyUPCE", BarcodeFormat::UPCE, "01234565"},
                       {"VNBarcodeSymbologyCode128", BarcodeFormat::Code128, "Pravik-128"},
                       {"VNBarcodeSymbologyCode39", BarcodeFormat::Code39, "PRAVIK 39"},
                       {"VNBarcodeSymbologyCode93", BarcodeFormat::Code93, "PRAVIK-93"},
                       {"VNBarcodeSymbologyITF14", BarcodeFormat::ITF, "16901234567899"},
                       {"VNBarcodeSymbologyPDF417", BarcodeFormat::PDF417, "PDF417 of Pravik"}};

TEST(ZXingBarcodeDetector, readsEachTypeWhenAllAreAskedFor) {
  for (const Code& code : eleven) {
    const auto codes = ZXingBarcodeDetector().detect(pictureOf(written(code.format, code.payload)), allTypes);
    ASSERT_EQ(payloads(codes), std::vector<std::string>{code.payload}) << code.symbology;
    EXPECT_EQ(codes[0].symbology.rawValue, code.symbology);
  }
}

TEST(ZXingBarcodeDetector, readsTurnedAndNoisyCodesOfEachType) {
  for (const Code& code : eleven) {
    for (const double degrees : {20.0, 118.0, -37.0}) {
      const Bitmap picture = turnedPicture(written(code.format, code.payload), degrees, 500);
      const auto codes = ZXingBarcodeDetector().detect(picture, allTypes);
      EXPECT_EQ(payloads(codes), std::vector<std::string>{code.payload}) << code.symbology << " " << degrees;
    }
  }
}

TEST(ZXingBarcodeDetector, theBoxCoversTheWholeCode) {
  for (const Code& code : eleven) {
    // The code fills the middle half of the picture in both directions, but for its quiet zone.
    const auto codes = ZXingBarcodeDetector().detect(pictureOf(written(code.format, code.payload)), allTypes);
    ASSERT_EQ(codes.size(), 1U) << code.symbology;
    const Rect& box = codes[0].boundingBox;
    EXPECT_NEAR(box.midX(), 0.5, 0.03) << code.symbology;
    EXPECT_NEAR(box.midY(), 0.5, 0.03) << code.symbology;
    EXPECT_GT(box.width, 0.1) << code.symbology;
    EXPECT_GT(box.height, 0.3) << code.symbology;
  }
}

TEST(ZXingBarcodeDetector, theOriginOfTheBoxIsAtTheLowerLeft) {
  const auto code = written(BarcodeFormat::QRCode, "upper left", 100, 100);
  const Bitmap picture =
      test::greyPicture(400, 200, [&](int x, int y) { return x < 100 && y < 100 && code.get(x, y) ? 0 : 255; });
  const auto codes = ZXingBarcodeDetector().detect(picture, allTypes);
  ASSERT_EQ(codes.size(), 1U);
  EXPECT_NEAR(codes[0].boundingBox.midX(), 0.125, 0.02);
  EXPECT_NEAR(codes[0].boundingBox.midY(), 0.75, 0.02);
}

TEST(ZXingBarcodeDetector, readsFaintCodes) {
  EXPECT_EQ(payloads(ZXingBarcodeDetector().detect(pictureOf(written(BarcodeFormat::EAN13, "6901234567892"), 150, 175),
                                                   allTypes)),
            std::vector<std::string>{"6901234567892"});
}

TEST(ZXingBarcodeDetector, answersOnlyWhatWasAskedFor) {
  const Bitmap picture = pictureOf(written(BarcodeFormat::EAN13, "6901234567892"));
  const ZXingBarcodeDetector detector;
  EXPECT_TRUE(detector.detect(picture, {}).empty());
  EXPECT_TRUE(detector.detect(picture, std::vector<BarcodeSymbology>{{"VNBarcodeSymbologyQR"}, {"unknown"}}).empty());
  EXPECT_EQ(detector.detect(picture, std::vector<BarcodeSymbology>{{"unknown"}, {"VNBarcodeSymbologyEAN13"}}).size(),
            1U);
}

TEST(ZXingBarcodeDetector, findsCodesOfDifferentTypesOnOnePictureTheSurerFirst) {
  const auto bars = written(BarcodeFormat::Code39, "PRAVIK"),
             square = written(BarcodeFormat::QRCode, "square", 120, 120);
  const Bitmap picture = test::greyPicture(340, 300, [&](int x, int y) {
    if (y < 120) return x < 300 && bars.get(x, y) ? 0 : 255;
    return y >= 160 && y < 280 && x < 120 && square.get(x, y - 160) ? 0 : 255;
  });
  EXPECT_EQ(payloads(ZXingBarcodeDetector().detect(picture, allTypes)), (std::vector<std::string>{"square", "PRAVIK"}));
}

TEST(ZXingBarcodeDetector, refusesInterleavedDigitsThatAreNoItf14) {
  for (const char* digits : {"1234567890", "16901234567890"})
    EXPECT_TRUE(ZXingBarcodeDetector().detect(pictureOf(written(BarcodeFormat::ITF, digits)), allTypes).empty())
        << digits;
}

TEST(ZXingBarcodeDetector, readsChineseTextThatDeclaresNoCharacterSet) {
  // "扫码" in GB 2312, byte by byte.
  const auto code =
      ZXing::MultiFormatWriter(BarcodeFormat::QRCode).encode(std::wstring(L"\u00C9\u00A8\u00C2\u00EB"), 200, 200);
  EXPECT_EQ(payloads(ZXingBarcodeDetector().detect(pictureOf(code), allTypes)), std::vector<std::string>{"扫码"});
}

TEST(ZXingBarcodeDetector, findsNothingOnPicturesWithoutACode) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> level(0, 255);
  const std::vector<std::pair<const char*, Bitmap>> pictures{
      {"one colour", test::greyPicture(640, 480, [](int, int) { return 128; })},
      {"noise", test::greyPicture(640, 480, [&](int, int) { return level(random); })},
      {"even stripes", test::greyPicture(640, 480, [](int x, int) { return x / 4 % 2 * 255; })},
      {"squares", test::greyPicture(640, 480, [](int x, int y) { return (x / 8 + y / 8) % 2 * 255; })},
      {"lines of print", test::greyPicture(640, 480, [&](int x, int y) {
         return y % 24 < 12 && (x * 7919 + y / 24 * 104729) / 5 % 3 == 0 ? 20 : 235;
       })}};
  for (const auto& [name, picture] : pictures)
    EXPECT_EQ(payloads(ZXingBarcodeDetector().detect(picture, allTypes)), std::vector<std::string>{}) << name;
}

TEST(ZXingBarcodeDetector, standsPicturesOfAnyShape) {
  const std::pair<int, int> shapes[] = {{1, 1}, {1, 2}, {3, 3}, {9, 1}, {1, 5000}, {5000, 1}, {70'000, 2}, {2, 70'000}};
  for (const auto& [width, height] : shapes) {
    const Bitmap picture = test::greyPicture(width, height, [](int x, int y) { return (x + y) % 2 * 255; });
    EXPECT_TRUE(ZXingBarcodeDetector().detect(picture, allTypes).empty()) << width << " x " << height;
  }
}

TEST(ZXingBarcodeDetector, readsACropOfAColourPicture) {
  const auto code = written(BarcodeFormat::QRCode, "crop", 100, 100);
  auto pixels = allocatePixels(PixelFormat::bgra8, 400, 300);
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x)
      for (int channel = 0; channel < 3; ++channel)
        pixels.get()[4 * ((y + 150) * 400 + x + 250) + channel] = code.get(x, y) ? 0 : 255;
  const Bitmap picture(PixelFormat::bgra8, 400, 300, 1600, pixels);
  EXPECT_EQ(ZXingBarcodeDetector().detect(picture.crop({240, 140, 120, 120}), allTypes).size(), 1U);
  EXPECT_EQ(ZXingBarcodeDetector().detect(picture.crop({0, 0, 240, 300}), allTypes).size(), 0U);
}

TEST(ZXingBarcodeDetector, looksAtTheStraightenedLabelAtLast) {
  const Bitmap blank = test::greyPicture(800, 600, [](int, int) { return 200; });
  const auto detector = std::make_shared<test::FakeRectangleDetector>();
  const auto renderer = std::make_shared<test::FakeRenderer>();
  detector->rectangles = {{{{0.5, 0.75}, {0.75, 0.75}, {0.5, 0.5}, {0.75, 0.5}}, {0.5, 0.5, 0.25, 0.25}, 0.9F}};
  renderer->rendered = [](const Bitmap&) { return pictureOf(written(BarcodeFormat::QRCode, "label", 150, 150)); };
  const auto codes = ZXingBarcodeDetector(detector, renderer).detect(blank, allTypes);
  ASSERT_EQ(payloads(codes), std::vector<std::string>{"label"});
  EXPECT_NEAR(codes[0].boundingBox.midX(), 0.625, 0.01);
  EXPECT_NEAR(codes[0].boundingBox.midY(), 0.625, 0.01);

  renderer->rendered = [](const Bitmap&) { return std::nullopt; };
  EXPECT_TRUE(ZXingBarcodeDetector(detector, renderer).detect(blank, allTypes).empty());
}

}  // namespace
}  // namespace pravik
