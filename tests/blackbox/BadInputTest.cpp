#include <gmock/gmock.h>

#include "Platform/Image.h"
#include "blackbox/Tool.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

namespace pravik::cli {
namespace {

using testing::HasSubstr;

const std::string cleanFront = (samples / "id-front-clean-0000.jpg").string();

class BadInput : public testing::Test {
 protected:
  test::TemporaryFolder folder_;
};

TEST_F(BadInput, EachFileGetsItsErrorAndTheRestOfTheBatchGoesOn) {
  std::filesystem::create_directory(folder_.path() / "folder");
  const std::vector<std::pair<std::string, std::string>> cases{
      {(folder_.path() / "none.jpg").string(), "no such file"},
      {(folder_.path() / "folder").string(), "no pictures in this folder"},
      {folder_.write("empty.jpg", ""), "empty"},
      {folder_.write("cut.pdf", "%PDF-1.7\n1 0 obj"), "the PDF is damaged"},
      {folder_.write("cut.heic", std::string("\0\0\0\x18"
                                             "ftypheic\0\0\0\0mif1",
                                             20)),
       "the picture is damaged"},
      {folder_.write("text.jpg", "this is no picture"), "not a picture"},
  };
  for (const std::string command : {"id-front", "bank-card", "code", "text"}) {
    std::vector<std::string> batch{command, "--format", "jsonl"};
    for (const auto& [file, reason] : cases) batch.push_back(file);
    batch.push_back((samples / "code-photo-0003.jpg").string());
    const ToolRun tool = runTool(batch);
    EXPECT_EQ(tool.status, someNotRecognized) << command;
    const auto answers = tool.answers();
    ASSERT_EQ(answers.size(), cases.size() + 1) << command;
    for (std::size_t i = 0; i < cases.size(); ++i) {
      const auto& error = answers[i]["error"];
      EXPECT_EQ(error["code"], "invalid_image") << command;
      EXPECT_THAT(error["context"]["reason"].get<std::string>(), HasSubstr(cases[i].second)) << command;
    }
    EXPECT_NE(answers.back().value("/error/code"_json_pointer, ""), "invalid_image") << command;
  }
  for (const std::string command : {"stats", "quality"})
    for (const auto& [file, reason] : cases)
      EXPECT_EQ(runTool({command, "--format", "jsonl", file}).answers().at(0)["error"]["code"], "invalid_image")
          << file;
}

TEST_F(BadInput, PicturesThatSayNothingAreAnsweredSo) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 700}, {640, 480}}) {
    const Bitmap blank = test::plainPicture(width, height, 200, 210, 220);
    const auto bytes = realPlatform().imageCodec->encode(blank, ImageFileFormat::png);
    const std::string file = folder_.write("blank.png", std::string(bytes.begin(), bytes.end()));
    for (const std::string command : {"id-front", "id-back", "code"}) {
      const ToolRun tool = runTool({command, "--format", "jsonl", file});
      EXPECT_EQ(tool.status, someNotRecognized) << command << width;
      EXPECT_EQ(tool.answers().at(0)["error"]["code"], "insufficient_text") << command << " " << width;
    }
    EXPECT_EQ(runTool({"text", "--format", "jsonl", file}).answers().at(0)["result"]["text"], "");
    EXPECT_EQ(runTool({"stats", file}).status, allRecognized);
  }
}

TEST_F(BadInput, MissingAndCorruptModelsAreAnIncompleteInstallation) {
  const std::string models = folder_.path().string();
  const ToolRun missing = runTool({"id-front", "--models", models, cleanFront});
  EXPECT_EQ(missing.status, incompleteInstallation);
  EXPECT_THAT(missing.err, HasSubstr("tools/setup"));
  EXPECT_EQ(runTool({"doctor", "--models", models}).status, incompleteInstallation);

  for (const auto& entry : std::filesystem::directory_iterator(defaultModelDirectory()))
    folder_.write(entry.path().filename().string(), "corrupt");
  const ToolRun corrupt = runTool({"id-front", "--models", models, "--format", "jsonl", cleanFront});
  EXPECT_EQ(corrupt.status, incompleteInstallation) << corrupt.out;
  EXPECT_EQ(corrupt.answers().at(0)["error"]["code"], "recognition_failed");
  EXPECT_THAT(corrupt.err, HasSubstr(".onnx"));
  EXPECT_EQ(runTool({"doctor"}).status, allRecognized);
}

}  // namespace
}  // namespace pravik::cli
