#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <utility>

#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

using test::textBlock;

TEST(PictureCommands, APictureIsAnsweredWithItsRecordAndItsChecks) {
  const struct {
    std::string kind;
    std::vector<RecognizedText> blocks;
    std::string answer;
  } cases[] = {
      {"id-back",
       {textBlock("签发机关 某市公安局", 0.5, 0.7), textBlock("有效期限 2015.03.01-长期", 0.5, 0.8)},
       R"({"issuingAuthority":"某市公安局","validityPeriod":"20150301-长期","startDate":"20150301",)"
       R"("endDate":null,"isLongTerm":true},"checks":{"startBeforeEnd":true})"},
      {"bank-card",
       {textBlock("6222 0212 3456 7890", 0.5, 0.5), textBlock("礼品卡", 0.5, 0.8)},
       R"({"cardNumber":"6222 0212 3456 7890","rawCardNumber":"6222021234567890","bankName":null,)"
       R"("cardType":"预付卡","cardholderName":null},"checks":{"luhn":false})"},
      {"text",
       {textBlock("甲", 0.2, 0.2), textBlock("乙", 0.5, 0.2), textBlock("丙", 0.2, 0.6)},
       R"({"text":"甲 乙\n丙"})"},
  };
  CommandRun command;
  for (const auto& [kind, blocks, answer] : cases) {
    command.engine->blocks = blocks;
    EXPECT_EQ(command({kind, "--format", "jsonl", "a.jpg"}), 0);
    EXPECT_EQ(command.out, R"({"file":"a.jpg","kind":")" + kind + R"(","result":)" + answer + "}\n");
  }
}

TEST(PictureCommands, TheStageOfABankCardIsToldWhenAsked) {
  CommandRun command;
  command.engine->script = {{}, {textBlock("6222 0212 3456 7894", 0.5, 0.5)}};
  const std::string folder = TemporaryFolder().path().string();
  EXPECT_EQ(command({"bank-card", "--stages", "--debug-images", folder, "--format", "jsonl", "a.jpg"}), 0);
  EXPECT_EQ(command.lines().at(0)["stage"], "retry");
  EXPECT_FALSE(command.options.photoFolder.empty());
}

TEST(PictureCommands, SeveralPhotosOfOneBankCardGiveOneAnswer) {
  using Blocks = std::vector<RecognizedText>;
  const Blocks doubtful{textBlock("6222 0212 3456 7890", 0.5, 0.5)};
  const Blocks good{textBlock("6222 0212 3456 7894", 0.5, 0.5)};
  CommandRun command;
  const auto answer = [&](const std::vector<Blocks>& readings, const std::vector<std::string>& photos) {
    command.engine->script = {readings.begin(), readings.end()};
    std::vector<std::string> words{"bank-card", "--same-card", "--format", "jsonl"};
    words.insert(words.end(), photos.begin(), photos.end());
    command(words);
    EXPECT_EQ(command.lines().size(), 1U);
    return command.lines().at(0);
  };
  const Json first = answer({doubtful, good}, {"a.jpg", "b.jpg", "c.jpg"});
  EXPECT_EQ(first["file"], "b.jpg") << "a number that fails the check digit does not end the reading";
  EXPECT_EQ(first["photos"], (Json{"a.jpg", "b.jpg"}));
  EXPECT_EQ(answer({doubtful}, {"a.jpg", "bad.jpg"})["result"]["cardNumber"], "6222 0212 3456 7890");
  EXPECT_EQ(answer({}, {"a.jpg", "bad.jpg"})["error"]["code"], "invalid_image");

  // The small picture has no band, so that a photo takes two readings.
  const Blocks start{textBlock("6222", 0.2, 0.7), textBlock("22202123", 0.4, 0.5)};
  const Json fused = answer({start, {}, {textBlock("2123456", 0.5, 0.5)}, {}, {textBlock("34567894", 0.5, 0.5)}, {}},
                            {"a.jpg", "b.jpg", "c.jpg"});
  EXPECT_EQ(fused["result"]["cardNumber"], "6222 0212 3456 7894");
  EXPECT_EQ(fused["checks"]["luhn"], true);
}

TEST(PictureCommands, AnswersKeepTheOrderOfTheFilesWhenSeveralAreReadAtOnce) {
  CommandRun command;
  command.barcodes->codes = {{"1", {"VNBarcodeSymbologyQR"}, {}}};
  std::vector<std::string> words{"code", "--jobs", "4", "--threads", "3", "--format", "json"};
  for (int i = 0; i < 50; ++i) words.push_back((i % 7 == 0 ? "bad" : "ok") + std::to_string(i));
  EXPECT_EQ(command(words), someNotRecognized);
  const Json answers = Json::parse(command.out);
  ASSERT_EQ(answers.size(), 50U);
  for (std::size_t i = 0; i < answers.size(); ++i) EXPECT_EQ(answers[i]["file"], words[i + 7]);
  EXPECT_EQ(command.options.threads, 3);
}

TEST(PictureCommands, TheStandardInputIsAPictureToo) {
  CommandRun command;
  command.barcodes->codes = {{"1", {"VNBarcodeSymbologyQR"}, {}}};
  command.input = "bytes";
  EXPECT_EQ(command({"code", "-"}), 0);
  command.input.clear();
  EXPECT_EQ(command({"code", "--format", "jsonl", "-"}), someNotRecognized);
  EXPECT_EQ(command.lines().at(0)["error"]["context"]["reason"], "the file is empty");
}

TEST(PictureCommands, ModelsThatAreNotNeededMayBeMissingOrBroken) {
  CommandRun command;
  command.missing = {"rec.onnx: no such file"};
  EXPECT_EQ(command({"id-front", "a.jpg"}), incompleteInstallation);
  EXPECT_NE(command({"code", "a.jpg"}), incompleteInstallation);
  command.missing.clear();
  command.broken = {"rec.onnx: not a model"};
  EXPECT_NE(command({"id-front", "a.jpg"}), incompleteInstallation) << "the engine did not complain";
}

TEST(PictureCommands, APictureForWhichThereIsNoMemoryIsAnErrorAndTheNextOneIsRead) {
  CommandRun command;
  command.engine->blocks = portraitSide();
  command.renderer->rendered = [first = true](const Bitmap& bitmap) mutable -> std::optional<Bitmap> {
    if (std::exchange(first, false)) throw std::bad_alloc();
    return bitmap;
  };
  EXPECT_EQ(command({"id-front", "--format", "jsonl", "a.jpg", "b.jpg"}), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0]["error"]["message"], "文字识别失败：内存不足");
  EXPECT_TRUE(lines[1].contains("result"));
}

TEST(PictureCommands, AStoppedBatchWritesWholeAnswersAndSaysThatItWasStopped) {
  CommandRun command;
  command.stop.request_stop();
  EXPECT_EQ(command({"code", "--format", "json", "a.jpg", "b.jpg"}), interrupted);
  EXPECT_EQ(command.out, "[]\n");
}

TEST(PictureCommands, ProgressIsShownOnATerminalOnly) {
  for (const bool terminal : {true, false}) {
    CommandRun command;
    command.showsProgress = terminal;
    command({"code", "a.jpg", "b.jpg"});
    EXPECT_EQ(command.err.find("1 / 2") != std::string::npos, terminal);
  }
}

TEST(Annotation, WritesAPictureForEachInputThatWasReadUnderANameOfItsOwn) {
  const TemporaryFolder folder;
  CommandRun command;
  command.engine->blocks = portraitSide();
  const std::string marked = (folder.path() / "new").string();
  EXPECT_EQ(command({"id-front", "--annotate", marked, "x/a.jpg", "y/a.png", "b.jpg", "bad.jpg"}), someNotRecognized);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(marked))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"a-annotated-2.jpg", "a-annotated.jpg", "b-annotated.jpg"}));
}

TEST(Annotation, AFolderThatCannotBeWrittenIsSaidBeforeTheWorkStarts) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file", "in the way");
  CommandRun command;
  EXPECT_EQ(command({"id-front", "--annotate", file, "a.jpg", "b.jpg"}), usageError);
  EXPECT_EQ(command.out, "");
  EXPECT_EQ(std::ranges::count(command.err, '\n'), 1);
  EXPECT_TRUE(command.engine->requests.empty());
}

TEST(Quality, TellsHowTheScannerWouldJudgeTheFrame) {
  CommandRun command;
  EXPECT_EQ(command({"quality", "--format", "jsonl", "a.jpg"}), 0);
  const Json result = command.lines().at(0)["result"];
  EXPECT_EQ(result["isGoodForCapture"], result["qualityHint"].is_null()) << result;
}

TEST(Stats, ShowsTheMeasuresAndBothEnhancements) {
  CommandRun command;
  EXPECT_EQ(command({"stats", "--format", "jsonl", "a.jpg"}), 0);
  const Json result = command.lines().at(0)["result"];
  EXPECT_TRUE(result["width"] == 40 && result["height"] == 30);
  for (const char* measure : {"mean", "std", "darkRatio", "brightRatio"}) EXPECT_TRUE(result[measure].is_number());
  for (const char* scene : {"idCard", "bankCard"}) EXPECT_TRUE(result[scene]["contrast"].is_number());
}

}  // namespace
}  // namespace pravik::cli
