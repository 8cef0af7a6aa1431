#include "backends/zxing/ZXingBarcodeDetector.h"

#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <random>

#include "Records/OCRScanMode.h"
#include "backends/opencv/Mat.h"
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

/// Whether a module of the code is dark; around the code, none is.
bool isDark(const ZXing::BitMatrix& code, int x, int y) {
  return x >= 0 && y >= 0 && x < code.width() && y < code.height() && code.get(x, y);
}

/// The code in the middle of a picture of twice its size.
Bitmap pictureOf(const ZXing::BitMatrix& code, int dark = 0, int light = 255) {
  return test::greyPicture(2 * code.width(), 2 * code.height(), [&](int x, int y) {
    return isDark(code, x - code.width() / 2, y - code.height() / 2) ? dark : light;
  });
}

/// The code turned about the centre of a square picture, with smooth edges and some noise.
Bitmap turnedPicture(const ZXing::BitMatrix& code, double degrees, int side) {
  cv::Mat turn = cv::getRotationMatrix2D(cv::Point(code.width(), code.height()), degrees, 1);
  turn.at<double>(0, 2) += side / 2 - code.width();
  turn.at<double>(1, 2) += side / 2 - code.height();
  cv::Mat picture, grain(side, side, CV_16S);
  cv::warpAffine(asMat(pictureOf(code, 50, 220)), picture, turn, {side, side}, cv::INTER_AREA, cv::BORDER_CONSTANT,
                 220);
  cv::RNG(1).fill(grain, cv::RNG::NORMAL, 0, 6);
  cv::add(picture, grain, picture, cv::noArray(), CV_8U);
  return toBitmap(picture);
}

using Texts = std::vector<std::string>;

Texts payloads(const std::vector<BarcodeObservation>& codes) {
  Texts texts;
  for (const auto& code : codes) texts.push_back(code.payload);
  return texts;
}

Texts read(const Bitmap& picture, const std::vector<BarcodeSymbology>& types = allTypes) {
  return payloads(ZXingBarcodeDetector().detect(picture, types, {}));
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

TEST(ZXingBarcodeDetector, ReadsEachTypeWhenAllAreAskedForAndBoxesTheWholeCode) {
  for (const Code& code : eleven) {
    // The code fills the middle half of the picture in both directions, but for its quiet zone.
    const auto codes = ZXingBarcodeDetector().detect(pictureOf(written(code.format, code.payload)), allTypes, {});
    ASSERT_EQ(payloads(codes), Texts{code.payload}) << code.symbology;
    EXPECT_EQ(codes[0].symbology.rawValue, code.symbology);
    const Rect& box = codes[0].boundingBox;
    EXPECT_NEAR(box.midX(), 0.5, 0.03) << code.symbology;
    EXPECT_NEAR(box.midY(), 0.5, 0.03) << code.symbology;
    EXPECT_GT(box.width, 0.1) << code.symbology;
    EXPECT_GT(box.height, 0.3) << code.symbology;
  }
}

TEST(ZXingBarcodeDetector, ReadsTurnedAndNoisyCodesOfEachType) {
  for (const Code& code : eleven)
    for (const double degrees : {20.0, 118.0, -37.0})
      EXPECT_EQ(read(turnedPicture(written(code.format, code.payload), degrees, 500)), Texts{code.payload})
          << code.symbology << " " << degrees;
}

TEST(ZXingBarcodeDetector, TheOriginOfTheBoxIsAtTheLowerLeft) {
  const auto code = written(BarcodeFormat::QRCode, "upper left", 100, 100);
  const Bitmap picture = test::greyPicture(400, 200, [&](int x, int y) { return isDark(code, x, y) ? 0 : 255; });
  const auto codes = ZXingBarcodeDetector().detect(picture, allTypes, {});
  ASSERT_EQ(codes.size(), 1U);
  EXPECT_NEAR(codes[0].boundingBox.midX(), 0.125, 0.02);
  EXPECT_NEAR(codes[0].boundingBox.midY(), 0.75, 0.02);
}

TEST(ZXingBarcodeDetector, AnswersOnlyWhatWasAskedFor) {
  const Bitmap faint = pictureOf(written(BarcodeFormat::EAN13, "6901234567892"), 150, 175);
  EXPECT_EQ(read(faint, {}), Texts{});
  EXPECT_EQ(read(faint, {{"VNBarcodeSymbologyQR"}, {"unknown"}}), Texts{});
  EXPECT_EQ(read(faint, {{"unknown"}, {"VNBarcodeSymbologyEAN13"}}), Texts{"6901234567892"});
}

TEST(ZXingBarcodeDetector, FindsCodesOfDifferentTypesOnOnePictureTheSurerFirst) {
  const auto bars = written(BarcodeFormat::Code39, "PRAVIK");
  const auto square = written(BarcodeFormat::QRCode, "square", 120, 120);
  EXPECT_EQ(read(test::greyPicture(
                340, 300, [&](int x, int y) { return isDark(bars, x, y) || isDark(square, x, y - 160) ? 0 : 255; })),
            (Texts{"square", "PRAVIK"}));
}

TEST(ZXingBarcodeDetector, RefusesInterleavedDigitsThatAreNoItf14) {
  for (const char* digits : {"1234567890", "16901234567890"})
    EXPECT_EQ(read(pictureOf(written(BarcodeFormat::ITF, digits))), Texts{}) << digits;
}

TEST(ZXingBarcodeDetector, ReadsChineseTextThatDeclaresNoCharacterSet) {
  // "扫码" in GB 2312, byte by byte.
  const auto code =
      ZXing::MultiFormatWriter(BarcodeFormat::QRCode).encode(std::wstring(L"\u00C9\u00A8\u00C2\u00EB"), 200, 200);
  EXPECT_EQ(read(pictureOf(code)), Texts{"扫码"});
}

TEST(ZXingBarcodeDetector, FindsNothingOnPicturesWithoutACode) {
  std::mt19937 random(7);
  const auto checks = [](int x, int y) { return (x + y) % 2 * 255; };
  const std::pair<const char*, std::function<int(int, int)>> patterns[] = {
      {"one colour", [](int, int) { return 128; }},
      {"noise", [&](int, int) { return static_cast<int>(random() % 256); }},
      {"even stripes", [](int x, int) { return x / 4 % 2 * 255; }},
      {"squares", [&](int x, int y) { return checks(x / 8, y / 8); }},
      {"lines of print",
       [](int x, int y) { return y % 24 < 12 && (x * 7919 + y / 24 * 104729) / 5 % 3 == 0 ? 20 : 235; }},
  };
  for (const auto& [name, pattern] : patterns) EXPECT_EQ(read(test::greyPicture(640, 480, pattern)), Texts{}) << name;
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 2}, {3, 3}, {9, 1}, {1, 5000}, {70'000, 2}, {2, 70'000}})
    EXPECT_EQ(read(test::greyPicture(width, height, checks)), Texts{}) << width << " x " << height;
}

TEST(ZXingBarcodeDetector, ReadsACropOfAColourPicture) {
  const auto code = written(BarcodeFormat::QRCode, "crop", 100, 100);
  auto pixels = allocatePixels(PixelFormat::bgra8, 400, 300);
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x)
      for (int channel = 0; channel < 3; ++channel)
        pixels.get()[4 * ((y + 150) * 400 + x + 250) + channel] = code.get(x, y) ? 0 : 255;
  const Bitmap picture(PixelFormat::bgra8, 400, 300, 1600, pixels);
  EXPECT_EQ(read(picture.crop({240, 140, 120, 120})), Texts{"crop"});
  EXPECT_EQ(read(picture.crop({0, 0, 240, 300})), Texts{});
}

/// Copies of a picture side by side.
Bitmap tiled(const Bitmap& tile, int columns, int rows) {
  return toBitmap(cv::repeat(asMat(tile), rows, columns));
}

TEST(ZXingBarcodeDetector, ReadsASheetThatIsFullOfCodes) {
  EXPECT_EQ(read(tiled(pictureOf(written(BarcodeFormat::QRCode, "sheet", 60, 60)), 9, 9)), Texts{"sheet"});
}

TEST(ZXingBarcodeDetector, APictureFullOfCornersTakesNoLongerThanItMay) {
  const Bitmap corner = test::greyPicture(18, 18, [](int x, int y) {
    const int ring = std::max(std::abs(x - 9), std::abs(y - 9)) / 2;
    return ring == 2 || ring == 4 ? 255 : 0;
  });
  const auto begin = std::chrono::steady_clock::now();
  const WorkLimit limit{.deadline = begin + std::chrono::milliseconds(300), .stop = {}};
  EXPECT_TRUE(ZXingBarcodeDetector().detect(tiled(corner, 60, 60), allTypes, limit).empty());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << "would take minutes";
}

TEST(ZXingBarcodeDetector, LooksAtTheStraightenedLabelAtLast) {
  const Bitmap blank = test::greyPicture(800, 600, [](int, int) { return 200; });
  const auto detector = std::make_shared<test::FakeRectangleDetector>();
  const auto renderer = std::make_shared<test::FakeRenderer>();
  detector->rectangles = {{{{0.5, 0.75}, {0.75, 0.75}, {0.5, 0.5}, {0.75, 0.5}}, {0.5, 0.5, 0.25, 0.25}, 0.9F}};
  renderer->rendered = [](const Bitmap&) { return pictureOf(written(BarcodeFormat::QRCode, "label", 150, 150)); };
  const auto codes = ZXingBarcodeDetector(detector, renderer).detect(blank, allTypes, {});
  ASSERT_EQ(payloads(codes), Texts{"label"});
  EXPECT_NEAR(codes[0].boundingBox.midX(), 0.625, 0.01);
  EXPECT_NEAR(codes[0].boundingBox.midY(), 0.625, 0.01);

  renderer->rendered = [](const Bitmap&) { return std::nullopt; };
  EXPECT_TRUE(ZXingBarcodeDetector(detector, renderer).detect(blank, allTypes, {}).empty());
}

}  // namespace
}  // namespace pravik
