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
    Json line = command.lines().at(0);
    line.erase("warnings");
    EXPECT_EQ(jsonText(line), R"({"file":"a.jpg","kind":")" + kind + R"(","result":)" + answer + "}");
  }
}

TEST(PictureCommands, EveryCardOfAPictureIsAnsweredInOneList) {
  CommandRun command;
  const std::vector<RecognizedText> emblemSide{textBlock("签发机关 某市公安局", 0.5, 0.7),
                                               textBlock("有效期限 2015.03.01-长期", 0.5, 0.8)};
  command.engine->blocks = emblemSide;
  EXPECT_EQ(command({"cards", "--format", "jsonl", "a.jpg"}), 0);
  const Answer card = Json::parse(command.out)["cards"].at(0);
  EXPECT_EQ(card["kind"], "id-back");
  EXPECT_EQ(card["result"]["issuingAuthority"], "某市公安局");
  EXPECT_EQ(card["corners"].size(), 4U);
  EXPECT_EQ(command({"cards", "a.jpg"}), 0);
  EXPECT_TRUE(command.out.starts_with("a.jpg\n  1. Identity card, emblem side\n  issuingAuthority  某市公安局\n"))
      << command.out;

  command.engine->blocks = {textBlock("今天天气很好", 0.5, 0.5)};
  EXPECT_EQ(command({"cards", "--format", "jsonl", "a.jpg"}), 1);
  EXPECT_EQ(Json::parse(command.out)["report"]["reason"], "too_small") << "the picture has fewer than 320 pixels";
  EXPECT_EQ(command({"cards", "--format", "csv", "a.jpg"}), 2);
}

TEST(PictureCommands, CommaSeparatedValuesHaveAHeaderAndARowForEachPicture) {
  CommandRun command;
  command.engine->blocks = {textBlock("6222 0212 3456 7890", 0.5, 0.5)};
  EXPECT_EQ(command({"bank-card", "--format", "csv", "a.jpg", "bad.jpg"}), someNotRecognized);
  EXPECT_EQ(command.out,
            "file,page,kind,cardNumber,rawCardNumber,bankName,cardType,cardholderName,luhn,error,message,reason,"
            "doubtful,warnings,problems\r\n"
            "a.jpg,,bank-card,6222 0212 3456 7890,6222021234567890,,,,false,,,,,"
            "\"too_small\ncut_off\ngrey_copy\ncheck_failed\",\r\n"
            "bad.jpg,,bank-card,,,,,,,invalid_image,无效的图像，请提供有效的 UIImage,not a picture,,,\r\n");
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

/// The answers of `code` for these words, each as "FILE", with its page and its reason where it has them.
std::vector<std::string> answered(CommandRun& command, std::vector<std::string> words) {
  command.barcodes->codes = {{"1", {"VNBarcodeSymbologyQR"}, {}}};
  words.insert(words.begin(), {"code", "--format", "jsonl"});
  command(words);
  std::vector<std::string> answers;
  for (const Json& line : command.lines()) {
    std::string answer = std::filesystem::path(line["file"].get<std::string>()).filename().string();
    if (line.contains("page")) answer += " " + std::to_string(line["page"].get<int>());
    if (line.contains("error")) answer += ": " + line["error"]["context"]["reason"].get<std::string>();
    answers.push_back(answer);
  }
  return answers;
}

using Answers = std::vector<std::string>;

TEST(PictureCommands, EachPageOfAFileIsAnswered) {
  for (const char* jobs : {"1", "3"}) {
    CommandRun command;
    EXPECT_EQ(answered(command, {"--jobs", jobs, "a.jpg", "pages3.pdf", "b.jpg"}),
              (Answers{"a.jpg", "pages3.pdf 1", "pages3.pdf 2: the picture is damaged", "pages3.pdf 3", "b.jpg"}))
        << jobs;
  }
  CommandRun command;
  const Answers many = answered(command, {"--jobs", "4", "pages" + std::to_string(maximumPages + 7)});
  ASSERT_EQ(many.size(), maximumPages + 1U);
  EXPECT_EQ(many.back(), "pages107 101: 7 more pages were left out: of a file 100 are read");
}

TEST(PictureCommands, AFolderStandsForThePicturesInIt) {
  const TemporaryFolder folder;
  const std::string inner = (folder.path() / "inner").string();
  std::filesystem::create_directories(inner + "/folder.jpg");
  for (const char* name : {"b.PNG", "a.jpg", ".hidden.jpg", "notes.txt", "\xFF.pdf", "inner/c.heic", "inner/bad.tif"})
    folder.write(name, "");
  std::filesystem::create_directory_symlink(folder.path(), inner + "/loop");
  std::filesystem::create_symlink("a.jpg", folder.path() / "link.jpeg");
  const std::string root = folder.path().string();
  const Answers flat{"a.jpg", "b.PNG", "link.jpeg", "\uFFFD.pdf"};
  const Answers deep{"a.jpg", "b.PNG", "bad.tif: not a picture", "c.heic", "link.jpeg", "\uFFFD.pdf"};
  CommandRun command;
  EXPECT_EQ(answered(command, {root}), flat);
  EXPECT_EQ(answered(command, {"--recursive", root + "/"}), deep);
  EXPECT_EQ(answered(command, {inner + "/folder.jpg"}),
            (Answers{"folder.jpg: no pictures in this folder (--recursive looks into those within it)"}));
}

TEST(PictureCommands, AListNamesPictures) {
  const TemporaryFolder folder;
  const std::string pictures = folder.path().string() + "/pictures";
  std::filesystem::create_directory(pictures);
  folder.write("pictures/c.jpg", "");
  const std::string lines = "a.jpg\n\nbad.jpg\n-\n" + pictures;
  const Answers wanted{"first.jpg", "a.jpg", "bad.jpg: not a picture", "-", "c.jpg"};
  CommandRun command;
  EXPECT_EQ(answered(command, {"first.jpg", "--files-from", folder.write("list", lines)}), wanted);
  command.input = lines;
  EXPECT_EQ(answered(command, {"first.jpg", "--jobs", "3", "--files-from", "-"}), wanted);
  command.input = std::string("two\nlines.jpg\0b.jpg\0", 20);
  EXPECT_EQ(answered(command, {"-0", "--files-from", "-"}), (Answers{"two\nlines.jpg", "b.jpg"}));
}

TEST(PictureCommands, WhatNamesNoPictureIsWrongUsage) {
  const TemporaryFolder folder;
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{"code"},
                                             {"code", "-", "-"},
                                             {"code", "-", "--files-from", "-"},
                                             {"code", "--files-from", "-"},
                                             {"code", "--files-from", "/no/such/list"},
                                             {"code", "--files-from", folder.path().string()}}) {
    CommandRun command;
    EXPECT_EQ(command(words), usageError) << testing::PrintToString(words);
    EXPECT_NE(command.err, "") << testing::PrintToString(words);
    EXPECT_EQ(command.out, "") << testing::PrintToString(words);
  }
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
    command({"code", "pages2.pdf", "b.jpg"});
    EXPECT_EQ(command.err.find("2 / 3") != std::string::npos, terminal);
  }
}

TEST(Annotation, WritesAPictureForEachInputThatWasReadUnderANameOfItsOwn) {
  const TemporaryFolder folder;
  CommandRun command;
  command.engine->blocks = portraitSide();
  const std::string marked = (folder.path() / "new").string();
  EXPECT_EQ(command({"id-front", "--annotate", marked, "x/a.jpg", "y/a.png", "pages3.pdf", "bad.jpg"}),
            someNotRecognized);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(marked))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"a-annotated-2.jpg", "a-annotated.jpg", "pages3-page-1-annotated.jpg",
                                             "pages3-page-3-annotated.jpg"}));
}

TEST(Annotation, ARecordIsAnsweredThoughItsAnnotationCannotBeWritten) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "a-annotated.jpg");
  CommandRun command;
  command.engine->blocks = {textBlock("6222 0212 3456 7894", 0.5, 0.5)};
  const std::string out = folder.path().string();
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{{}, {"--same-card"}}) {
    std::vector<std::string> all{"bank-card", "--annotate", out, "--format", "jsonl", "a.jpg", "b.jpg"};
    all.insert(all.end(), words.begin(), words.end());
    EXPECT_EQ(command(all), someNotRecognized) << command.out;
    const Json answer = command.lines().at(0);
    EXPECT_EQ(answer["result"]["rawCardNumber"], "6222021234567894");
    ASSERT_EQ(answer["problems"].size(), 1U);
    EXPECT_NE(answer["problems"][0].get<std::string>().find(out + "/a-annotated.jpg: "), std::string::npos);
  }
  EXPECT_EQ(command({"bank-card", "--annotate", out, "a.jpg"}), someNotRecognized);
  EXPECT_NE(command.out.find("  problem "), std::string::npos) << command.out;
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
