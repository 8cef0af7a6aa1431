#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

#include "Platform/Image.h"
#include "blackbox/Tool.h"
#include "support/Pictures.h"

namespace pravik::cli {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

class BadInput : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() / ("pravik-bad-input-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return (folder_ / name).string();
  }

  std::filesystem::path folder_;
};

Bytes encoded(const Bitmap& bitmap, ImageFileFormat format) {
  return realPlatform().imageCodec->encode(bitmap, format);
}

Bytes text(const std::string& content) {
  return {content.begin(), content.end()};
}

/// The start of a PNG that claims a size; nothing of its pixels follows.
Bytes pngHeader(std::uint32_t width, std::uint32_t height) {
  Bytes bytes = encoded(test::plainPicture(1, 1, 0, 0, 0), ImageFileFormat::png);
  // Width and height are the first fields of the first chunk, after 8 bytes of signature and 8 of chunk head.
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[16 + i] = static_cast<std::uint8_t>(width >> (24 - 8 * i));
    bytes[20 + i] = static_cast<std::uint8_t>(height >> (24 - 8 * i));
  }
  return bytes;
}

/// The JPEG with an Exif segment that holds nothing but the orientation.
Bytes withOrientation(Bytes jpeg, ImageOrientation orientation) {
  const Bytes segment{0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0,
                      'M',  'M',  0, 42, 0,   0,   0,   8,   0, 1,
                      0x01, 0x12, 0, 3,  0,   0,   0,   1,   0, static_cast<std::uint8_t>(orientation),
                      0,    0,    0, 0,  0,   0};
  jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
  return jpeg;
}

/// How a picture that stands upright must be stored so that the orientation turns it upright again.
ImageOrientation inverse(ImageOrientation orientation) {
  if (orientation == ImageOrientation::left) return ImageOrientation::right;
  if (orientation == ImageOrientation::right) return ImageOrientation::left;
  return orientation;
}

TEST_F(BadInput, eachFileGetsItsErrorAndTheRestOfTheBatchGoesOn) {
  Bytes truncated = encoded(test::plainPicture(400, 300, 90, 120, 200), ImageFileFormat::jpeg);
  truncated.resize(truncated.size() / 2);
  const std::vector<std::pair<std::string, std::string>> cases{
      {(folder_ / "none.jpg").string(), "no such file"},
      {folder_.string(), "directory"},
      {write("empty.jpg", {}), "empty"},
      {write("truncated.jpg", truncated), ""},
      {write("text.jpg", text("this is no picture")), "not a picture"},
      {write("huge.png", pngHeader(20'000, 20'000)), "20000 x 20000"},
  };
  for (const std::string command : {"id-front", "id-back", "code", "text", "stats"}) {
    for (const auto& [file, reason] : cases) {
      const ToolRun tool = runTool({command, "--format", "jsonl", file});
      EXPECT_EQ(tool.status, someNotRecognized) << command << " " << file;
      const auto error = tool.answers().at(0)["error"];
      EXPECT_EQ(error["code"], "invalid_image") << command << " " << file;
      EXPECT_NE(error["context"]["reason"].get<std::string>().find(reason), std::string::npos) << error;
    }
  }
  std::vector<std::string> batch{"code", "--format", "jsonl"};
  for (const auto& [file, reason] : cases) batch.push_back(file);
  batch.push_back((samples / "code-photo-0003.jpg").string());
  const ToolRun tool = runTool(batch);
  ASSERT_EQ(tool.answers().size(), cases.size() + 1);
  EXPECT_TRUE(tool.answers().back().contains("result")) << tool.out;
}

TEST_F(BadInput, picturesThatSayNothingAreAnsweredSo) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 700}, {640, 480}}) {
    const std::string file =
        write("blank.png", encoded(test::plainPicture(width, height, 200, 210, 220), ImageFileFormat::png));
    for (const std::string command : {"id-front", "id-back", "code"}) {
      const ToolRun tool = runTool({command, "--format", "jsonl", file});
      EXPECT_EQ(tool.status, someNotRecognized) << command << width;
      EXPECT_EQ(tool.answers().at(0)["error"]["code"], "insufficient_text") << command << " " << width;
    }
    EXPECT_EQ(runTool({"text", "--format", "jsonl", file}).answers().at(0)["result"]["text"], "");
    EXPECT_EQ(runTool({"stats", file}).status, allRecognized);
  }
}

TEST_F(BadInput, everyExifOrientationIsHonoured) {
  const std::filesystem::path sample = samples / "id-front-clean-0000.jpg";
  const auto expected = runTool({"id-front", "--format", "jsonl", sample.string()}).answers().at(0)["result"];
  const Bitmap upright = *realPlatform().imageCodec->load(sample).bitmap;
  for (int value = 1; value <= 8; ++value) {
    const auto orientation = static_cast<ImageOrientation>(value);
    const Bytes stored = encoded(uprightBitmap(upright, inverse(orientation)), ImageFileFormat::jpeg);
    const std::string file = write("turned.jpg", withOrientation(stored, orientation));
    const auto answer = runTool({"id-front", "--format", "jsonl", file}).answers().at(0);
    EXPECT_EQ(answer["result"]["idNumber"], expected["idNumber"]) << value;
    EXPECT_EQ(answer["result"]["name"], expected["name"]) << value;
  }
}

TEST_F(BadInput, missingAndCorruptModelsAreAnIncompleteInstallation) {
  const std::string sample = (samples / "id-front-clean-0000.jpg").string();
  const std::string models = (folder_ / "models").string();
  std::filesystem::create_directories(models);

  const ToolRun missing = runTool({"id-front", "--models", models, sample});
  EXPECT_EQ(missing.status, incompleteInstallation);
  EXPECT_NE(missing.err.find("tools/setup"), std::string::npos) << missing.err;
  EXPECT_EQ(runTool({"doctor", "--models", models}).status, incompleteInstallation);

  for (const auto& entry : std::filesystem::directory_iterator(defaultModelDirectory()))
    write("models/" + entry.path().filename().string(), text("corrupt"));
  const ToolRun corrupt = runTool({"id-front", "--models", models, "--format", "jsonl", sample});
  EXPECT_EQ(corrupt.status, incompleteInstallation) << corrupt.out;
  EXPECT_EQ(corrupt.answers().at(0)["error"]["code"], "recognition_failed");
  EXPECT_NE(corrupt.err.find(".onnx"), std::string::npos) << corrupt.err;

  EXPECT_EQ(runTool({"doctor"}).status, allRecognized);
}

TEST_F(BadInput, annotatedPicturesAreWrittenForWhatWasRead) {
  const ToolRun tool = runTool({"id-front", "--annotate", (folder_ / "marked").string(),
                                (samples / "id-front-clean-0000.jpg").string(), (folder_ / "none.jpg").string()});
  EXPECT_EQ(tool.status, someNotRecognized);
  const Image drawn = realPlatform().imageCodec->load(folder_ / "marked" / "id-front-clean-0000-annotated.jpg");
  EXPECT_GT(drawn.bitmap->width(), 100);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "marked" / "none-annotated.jpg"));
}

}  // namespace
}  // namespace pravik::cli
