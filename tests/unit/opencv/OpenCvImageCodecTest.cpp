#include "backends/opencv/files/OpenCvImageCodec.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "backends/opencv/Mat.h"
#include "support/TemporaryFolder.h"

namespace pravik {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Color = std::array<int, 3>;  // blue, green, red

const std::vector<int> jpegQuality = {cv::IMWRITE_JPEG_QUALITY, 98};
constexpr Color red = {40, 40, 200}, green = {40, 200, 40}, blue = {200, 40, 40}, white = {255, 255, 255};

/// A picture of four quarters: red and green above, blue and white below.
cv::Mat quarters() {
  constexpr int width = 48, height = 32;
  cv::Mat picture(height, width, CV_8UC3);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const Color& color = y < height / 2 ? (x < width / 2 ? red : green) : (x < width / 2 ? blue : white);
      picture.at<cv::Vec3b>(y, x) = cv::Vec3i(color.data());
    }
  return picture;
}

Bytes fileOf(const cv::Mat& picture, const char* extension, const std::vector<int>& options = {}) {
  Bytes file;
  cv::imencode(extension, picture, file, options);
  return file;
}

Bitmap decoded(const Bytes& file) {
  return OpenCvImageCodec().decode(file).bitmap.value();
}

/// A file beside this one:
/// - cmyk.jpg, 8 x 8 pixels of cyan, magenta, yellow and black, plain red;
/// - palette.png, 2 x 1 pixels, the first red and the second wholly transparent;
/// - quarters.heic, 96 x 64 pixels, quarters() and a quarter turn to the left; its Exif data tell of another turn,
/// which
///   does not count in this format;
/// - larger-than-promised.heic, the same without a turn, whose coded picture says that it has 16384 x 16384 pixels.
std::filesystem::path beside(const char* name) {
  return std::filesystem::path(PRAVIK_TEST_PICTURES_DIRECTORY) / name;
}

Bitmap loaded(const char* name) {
  return OpenCvImageCodec().load(beside(name)).bitmap.value();
}

Bytes bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Why bytes cannot be decoded or a file cannot be loaded.
template <class Source>
std::string errorOf(const Source& source) {
  try {
    if constexpr (std::is_convertible_v<Source, std::filesystem::path>)
      OpenCvImageCodec().load(source);
    else
      OpenCvImageCodec().decode(source);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

void expectColor(const Bitmap& bitmap, int x, int y, const Color& expected, const std::string& what) {
  ASSERT_EQ(bitmap.format(), PixelFormat::bgra8);
  const std::uint8_t* pixel = bitmap.row(y) + 4 * x;
  for (int c = 0; c < 3; ++c)
    EXPECT_NEAR(pixel[c], expected[static_cast<std::size_t>(c)], 6) << what << " channel " << c;
  EXPECT_EQ(pixel[3], 255) << what;
}

/// The colours at the top left, top right, bottom left and bottom right.
void expectCorners(const Bitmap& bitmap, const std::array<Color, 4>& expected, const std::string& what) {
  const int right = bitmap.width() - 5, bottom = bitmap.height() - 5;
  expectColor(bitmap, 4, 4, expected[0], what);
  expectColor(bitmap, right, 4, expected[1], what);
  expectColor(bitmap, 4, bottom, expected[2], what);
  expectColor(bitmap, right, bottom, expected[3], what);
}

/// The file with an Exif segment that holds nothing but the orientation, behind the start marker.
Bytes withOrientation(Bytes jpeg, std::uint8_t orientation) {
  const Bytes segment = {0xFF, 0xE1, 0, 34,   'E', 'x', 'i', 'f', 0, 0, 'M', 'M',         0, 42, 0, 0, 0, 8,
                         0,    1,    1, 0x12, 0,   3,   0,   0,   0, 1, 0,   orientation, 0, 0,  0, 0, 0, 0};
  jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
  return jpeg;
}

/// The file with bytes from `at` on replaced.
Bytes patched(Bytes file, std::size_t at, const Bytes& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) file.at(at + i) = bytes[i];
  return file;
}

Bytes shortened(Bytes file, double share) {
  file.resize(static_cast<std::size_t>(static_cast<double>(file.size()) * share));
  return file;
}

TEST(OpenCvImageCodec, DecodesEveryFormatToOpaqueColours) {
  for (const char* extension : {".jpg", ".png", ".bmp", ".webp", ".tiff"}) {
    const Bytes file = fileOf(quarters(), extension, jpegQuality);
    const Bitmap bitmap = decoded(file);
    ASSERT_EQ(bitmap.width(), 48) << extension;
    ASSERT_EQ(bitmap.height(), 32) << extension;
    expectCorners(bitmap, {red, green, blue, white}, extension);
  }
}

TEST(OpenCvImageCodec, TurnsRareKindsOfPixelsIntoColours) {
  const auto plain = [](int type, const cv::Scalar& value, const char* extension = ".png") {
    return decoded(fileOf(cv::Mat(4, 4, type, value), extension));
  };
  expectColor(plain(CV_16UC1, 40'000), 1, 1, {156, 156, 156}, "16-bit grey");
  expectColor(plain(CV_16UC4, {0, 0, 0, 32'896}), 1, 1, {127, 127, 127}, "16-bit, half transparent");
  expectColor(plain(CV_8UC1, 99, ".jpg"), 1, 1, {99, 99, 99}, "grey JPEG");
  expectColor(loaded("palette.png"), 0, 0, red, "opaque entry of a palette");
  expectColor(loaded("palette.png"), 1, 0, white, "transparent entry of a palette");
  expectColor(loaded("cmyk.jpg"), 4, 4, {0, 0, 254}, "four printing colours");
}

/// A BMP file of 2 x 2 pixels with a header of this size; what stands between it and the rows, and the rows.
Bytes bmpOf(std::uint8_t header, std::int8_t height, std::uint8_t bits, std::uint8_t compression, const Bytes& between,
            const Bytes& rows) {
  Bytes file(std::size_t{14} + header, 0);
  file[0] = 'B';
  file[1] = 'M';
  const std::size_t rowsAt = file.size() + between.size();
  file[10] = static_cast<std::uint8_t>(rowsAt & 0xFFU);
  file[11] = static_cast<std::uint8_t>(rowsAt >> 8U);
  file[14] = header;
  if (header == 12) {
    file = patched(file, 18, {2, 0, 2, 0, 1, 0, bits});
  } else {
    const std::uint8_t sign = height < 0 ? 0xFF : 0;
    file = patched(file, 18,
                   {2, 0, 0, 0, static_cast<std::uint8_t>(height), sign, sign, sign, 1, 0, bits, 0, compression});
  }
  file.insert(file.end(), between.begin(), between.end());
  file.insert(file.end(), rows.begin(), rows.end());
  return file;
}

TEST(OpenCvImageCodec, ReadsEveryKindOfBmpThatProgramsWrite) {
  // Pixels from the top left: black, blue / green, red.
  const Bytes palette{0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0};
  const Bytes shortPalette{0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};
  Bytes palette16 = palette, palette256 = palette, shortPalette16 = shortPalette;
  palette16.resize(64);
  palette256.resize(1024);
  shortPalette16.resize(48);
  const Bytes rgb565{0, 0xF8, 0, 0, 0xE0, 7, 0, 0, 0x1F, 0, 0, 0};
  const struct {
    const char* what;
    Bytes file;
  } cases[] = {
      {"24 bits", bmpOf(40, 2, 24, 0, {}, {0, 255, 0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0})},
      {"from the top", bmpOf(40, -2, 24, 0, {}, {0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0})},
      {"32 bits without opacity", bmpOf(40, 2, 32, 0, {}, {0, 255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0, 0, 0})},
      {"32 bits in an order of their own", bmpOf(40, 2, 32, 3, {255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0},
                                                 {0, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0})},
      {"16 bits", bmpOf(40, 2, 16, 0, {}, {0xE0, 3, 0, 0x7C, 0, 0, 0x1F, 0})},
      {"16 bits, six of them green", bmpOf(40, 2, 16, 3, rgb565, {0xE0, 7, 0, 0xF8, 0, 0, 0x1F, 0})},
      {"256 colours", bmpOf(40, 2, 8, 0, palette256, {2, 3, 0, 0, 0, 1, 0, 0})},
      {"16 colours", bmpOf(40, 2, 4, 0, palette16, {0x23, 0, 0, 0, 0x01, 0, 0, 0})},
      {"16 colours behind the oldest header", bmpOf(12, 2, 4, 0, shortPalette16, {0x23, 0, 0, 0, 0x01, 0, 0, 0})},
  };
  for (const auto& [what, file] : cases) {
    const Bitmap bitmap = decoded(file);
    expectColor(bitmap, 0, 0, {0, 0, 0}, what);
    expectColor(bitmap, 1, 0, {255, 0, 0}, what);
    expectColor(bitmap, 0, 1, {0, 255, 0}, what);
    expectColor(bitmap, 1, 1, {0, 0, 255}, what);
  }
  const Bytes masks{0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255};
  const Bytes rows{0, 0, 0, 128, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 255};
  const Bitmap transparent = decoded(bmpOf(40, 2, 32, 6, masks, rows));
  expectColor(transparent, 0, 1, {127, 127, 127}, "half transparent");
  expectColor(transparent, 1, 1, {255, 255, 255}, "transparent");
  const Bitmap twoColours = decoded(bmpOf(40, 2, 1, 0, {0, 0, 0, 0, 255, 255, 255, 0}, {0x40, 0, 0, 0, 0x80, 0, 0, 0}));
  expectColor(twoColours, 0, 0, {255, 255, 255}, "two colours");
  expectColor(twoColours, 0, 1, {0, 0, 0}, "two colours");
  EXPECT_EQ(errorOf(bmpOf(40, 2, 8, 1, palette256, {2, 2, 0, 1})), "pixels of this kind cannot be read");
  EXPECT_EQ(errorOf(bmpOf(40, 2, 5, 0, {}, {0, 0, 0, 0, 0, 0, 0, 0})), "pixels of this kind cannot be read");
  EXPECT_EQ(errorOf(bmpOf(40, 2, 8, 0, {}, {0, 0, 0, 0, 0, 0, 0, 0})), "the file is truncated");
  EXPECT_EQ(errorOf(shortened(bmpOf(40, 2, 16, 3, rgb565, {0, 0, 0, 0, 0, 0, 0, 0}), 0.95)), "the file is truncated");
  EXPECT_EQ(errorOf(bmpOf(20, 2, 24, 0, {}, Bytes(40, 0))), "the picture is damaged");
}

TEST(OpenCvImageCodec, TurnsPicturesUprightAsTheExifTagSays) {
  const Bytes file = fileOf(quarters(), ".jpg", jpegQuality);
  const std::array<Color, 4> expected[] = {
      {red, green, blue, white}, {green, red, white, blue}, {white, blue, green, red}, {blue, white, red, green},
      {red, blue, green, white}, {blue, red, white, green}, {white, green, blue, red}, {green, white, red, blue},
  };
  for (std::uint8_t orientation = 1; orientation <= 8; ++orientation) {
    const Bitmap bitmap = decoded(withOrientation(file, orientation));
    EXPECT_EQ(bitmap.width(), orientation <= 4 ? 48 : 32);
    expectCorners(bitmap, expected[orientation - 1], "orientation " + std::to_string(orientation));
  }
  expectCorners(decoded(withOrientation(file, 9)), expected[0], "an orientation that does not exist");
}

TEST(OpenCvImageCodec, TurnsHeicPicturesAsTheirOwnPropertySays) {
  const Bitmap bitmap = loaded("quarters.heic");
  EXPECT_EQ(bitmap.width(), 64);
  EXPECT_EQ(bitmap.height(), 96);
  expectCorners(bitmap, {green, white, red, blue}, "HEIC");
}

/// A TIFF file of small pictures, one plain grey after the other.
Bytes tiffOf(const std::vector<int>& greys) {
  std::vector<cv::Mat> pages;
  for (const int grey : greys) pages.emplace_back(8, 8, CV_8UC3, cv::Scalar::all(grey));
  const test::TemporaryFolder folder;
  const std::string path = folder.path() / "pages.tiff";
  cv::imwritemulti(path, pages);
  return bytesOf(path);
}

TEST(OpenCvImageCodec, DecodesThePagesOfATiffFileOneByOne) {
  const OpenCvImageCodec codec;
  const PictureFile file = codec.open(tiffOf({10, 120, 240}));
  ASSERT_EQ(file.pageCount, 3);
  for (const auto& [page, grey] : {std::pair{2, 240}, {0, 10}, {1, 120}})
    expectColor(file.decode(page).bitmap.value(), 1, 1, {grey, grey, grey}, "page " + std::to_string(page));
  EXPECT_EQ(codec.open(tiffOf(std::vector<int>(maximumPages + 20, 9))).pageCount, maximumPages + 20);
}

TEST(OpenCvImageCodec, ADamagedPageOfATiffFileLeavesTheOthers) {
  const Bytes whole = tiffOf({10, 120, 240});
  // "II", 42, and the place of the first directory; each ends with the place of the next one.
  const auto number = [](const Bytes& file, std::size_t at) {
    return std::size_t{file[at]} | std::size_t{file[at + 1]} << 8U | std::size_t{file[at + 2]} << 16U |
           std::size_t{file[at + 3]} << 24U;
  };
  const auto linkBehind = [&](std::size_t directory) {
    return directory + 2 + std::size_t{12} * (std::size_t{whole[directory]} | std::size_t{whole[directory + 1]} << 8U);
  };
  const std::size_t first = number(whole, 4), second = number(whole, linkBehind(first));
  const OpenCvImageCodec codec;

  const PictureFile cut = codec.open(patched(whole, linkBehind(second), {0xFF, 0xFF, 0xFF, 0x7F}));
  ASSERT_EQ(cut.pageCount, 3);
  EXPECT_EQ(cut.decode(1).bitmap->width(), 8);
  EXPECT_THROW(cut.decode(2), std::runtime_error);

  const Bytes toFirst(whole.begin() + 4, whole.begin() + 8);
  EXPECT_EQ(codec.open(patched(whole, linkBehind(second), toFirst)).pageCount, 2) << "a chain that bites its tail";

  // The first entry of a directory; its tag becomes that of the kind of picture, with the kind "thumbnail".
  const Bytes thumbnail{0xFE, 0, 4, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(codec.open(patched(whole, second + 2, thumbnail)).pageCount, 2);
  EXPECT_EQ(codec.open(patched(whole, first + 2, thumbnail)).pageCount, 3) << "the first is a page whatever it says";
}

TEST(OpenCvImageCodec, RefusesWhatIsNoWholePicture) {
  const Bytes jpeg = fileOf(quarters(), ".jpg"), png = fileOf(quarters(), ".png");
  const std::string text = "Name,Number\n";
  const struct {
    const char* what;
    Bytes file;
    const char* error;
  } cases[] = {
      {"nothing", {}, "the file is empty"},
      {"text", Bytes(text.begin(), text.end()), "not a picture"},
      {"JPEG cut in its pixels", shortened(jpeg, 0.9), "the file is truncated"},
      {"JPEG cut in its header", shortened(jpeg, 0.1), "the file is truncated"},
      {"progressive JPEG cut in its pixels",
       shortened(fileOf(quarters(), ".jpg", {cv::IMWRITE_JPEG_PROGRESSIVE, 1}), 0.9), "the file is truncated"},
      {"PNG cut", shortened(png, 0.9), "the file is truncated"},
      {"WebP cut", shortened(fileOf(quarters(), ".webp"), 0.9), "the file is truncated"},
      {"TIFF cut", shortened(fileOf(quarters(), ".tiff"), 0.5), "the file is truncated"},
      {"PNG with a wrong byte", patched(png, png.size() / 2, {static_cast<std::uint8_t>(~png[png.size() / 2])}),
       "the picture is damaged"},
      {"HEIC cut in its pixels", shortened(bytesOf(beside("quarters.heic")), 0.9), "the picture is damaged"},
      {"HEIC cut in its header", shortened(bytesOf(beside("quarters.heic")), 0.3), "the picture is damaged"},
      {"HEIC whose coded picture is larger than allowed", bytesOf(beside("larger-than-promised.heic")),
       "the picture is damaged"},
      {"JPEG without pixels", {0xFF, 0xD8, 0xFF, 0xD9}, "the picture is damaged"},
      {"floating point", fileOf(cv::Mat(4, 4, CV_32FC1, cv::Scalar(0.5)), ".tiff"), "cannot be read"},
  };
  for (const auto& [what, file, error] : cases) EXPECT_THAT(errorOf(file), testing::HasSubstr(error)) << what;
}

/// A file with some bits in its middle turned over.
Bytes damaged(Bytes file) {
  for (std::size_t i = file.size() / 2; i < file.size() / 2 + 8; ++i) file[i] ^= 0x2AU;
  return file;
}

TEST(OpenCvImageCodec, LibrariesDoNotWriteToStandardError) {
  cv::Mat noise(64, 64, CV_8UC3);
  cv::randu(noise, 0, 256);
  const std::vector<int> compressed{cv::IMWRITE_TIFF_COMPRESSION, 5};
  testing::internal::CaptureStderr();
  for (const Bytes& file :
       {damaged(fileOf(noise, ".jpg")), damaged(fileOf(noise, ".jpg", {cv::IMWRITE_JPEG_PROGRESSIVE, 1})),
        damaged(fileOf(noise, ".tiff", compressed)), damaged(fileOf(noise, ".tiff")), damaged(fileOf(noise, ".webp")),
        damaged(fileOf(noise, ".bmp")), damaged(bytesOf(beside("quarters.heic"))),
        shortened(bytesOf(beside("quarters.heic")), 0.9)})
    errorOf(file);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(OpenCvImageCodec, RefusesPicturesThatAreTooLargeBeforeDecodingThem) {
  // Headers that promise far more pixels than the few bytes behind them hold.
  const Bytes side = {0, 0, 0x4E, 0x20};  // 20,000
  const Bytes png = patched(patched(fileOf(quarters(), ".png"), 16, side), 20, side);
  EXPECT_THAT(errorOf(png), testing::HasSubstr("too large: 20000 x 20000 pixels"));
  Bytes heic = bytesOf(beside("quarters.heic"));
  const std::string_view size = "ispe";
  const auto promise = std::ranges::search(heic, size).begin() + 8;
  std::ranges::copy(side, promise);
  EXPECT_THAT(errorOf(heic), testing::HasSubstr("too large"));
  const Bytes bmp = patched(fileOf(quarters(), ".bmp"), 18, {0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F});
  EXPECT_NE(errorOf(bmp), "no error");
  const Bytes large(static_cast<std::size_t>(maximumPictureFileBytes) + 1, 0xFF);
  EXPECT_THAT(errorOf(large), testing::HasSubstr("at most 64 MiB"));
}

TEST(OpenCvImageCodec, SaysWhyAFileCannotBeLoaded) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(errorOf(folder.path() / "absent.jpg"), "no such file");
  EXPECT_EQ(errorOf(folder.path()), "is a directory");
  EXPECT_EQ(errorOf(folder.write("empty.jpg", "")), "the file is empty");
  const std::filesystem::path pipe = folder.path() / "pipe.jpg";
  ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
  EXPECT_EQ(errorOf(pipe), "not a regular file");

  const std::string sealed = folder.write("sealed.png", "a picture");
  std::filesystem::permissions(sealed, std::filesystem::perms::none);
  if (geteuid() == 0) GTEST_SKIP() << "everything is permitted to root";
  EXPECT_THAT(errorOf(sealed), testing::HasSubstr("cannot be read"));
}

TEST(OpenCvImageCodec, WritesWhatItReads) {
  const OpenCvImageCodec codec;
  const Bitmap part = decoded(fileOf(quarters(), ".png")).crop({.x = 8, .y = 4, .width = 36, .height = 24});
  for (const ImageFileFormat format : {ImageFileFormat::png, ImageFileFormat::jpeg})
    expectCorners(decoded(codec.encode(part, format)), {red, green, blue, white}, "written");
  const Bitmap endless = toBitmap(cv::Mat(1, 70'000, CV_8UC1, cv::Scalar(0)));
  EXPECT_THROW(codec.encode(endless, ImageFileFormat::jpeg), std::runtime_error);
}

}  // namespace
}  // namespace pravik
