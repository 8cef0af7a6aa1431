#include <gtest/gtest.h>

#include <algorithm>

#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

TEST(PictureCommands, aCardIsAnsweredWithItsRecordAndChecks) {
  CommandRun command;
  command.engine->blocks = portraitSide();
  EXPECT_EQ(command({"id-front", "--format", "jsonl", "a.jpg"}), 0);
  EXPECT_EQ(command.out, R"({"file":"a.jpg","kind":"id-front","result":{"name":"张三","gender":"男","ethnicity":"汉",)"
                         R"("birthDate":"1990年03月07日","birthYear":"1990","birthMonth":"03","birthDay":"07",)"
                         R"("address":"北京市东城区景山前街4号","idNumber":"11010119900307123X"},)"
                         R"("checks":{"checkDigit":false,"birthDateMatches":true,"genderMatches":true}})"
                         "\n");
}

TEST(PictureCommands, anEmblemSideHasNullForAnAbsentDate) {
  CommandRun command;
  command.engine->blocks = {test::textBlock("签发机关 某市公安局", 0.5, 0.7),
                            test::textBlock("有效期限 2015.03.01-长期", 0.5, 0.8)};
  EXPECT_EQ(command({"id-back", "--format", "jsonl", "a.jpg"}), 0);
  EXPECT_EQ(command.lines().at(0)["result"].dump(),
            R"({"issuingAuthority":"某市公安局","validityPeriod":"20150301-长期","startDate":"20150301",)"
            R"("endDate":null,"isLongTerm":true})");
  EXPECT_EQ(command.lines().at(0)["checks"].dump(), R"({"startBeforeEnd":true})");
}

TEST(PictureCommands, aBankCardTellsWhetherItsCheckDigitIsRightAndTheStageWhenAsked) {
  CommandRun command;
  command.engine->blocks = {test::textBlock("6222 0212 3456 7890", 0.5, 0.5), test::textBlock("礼品卡", 0.5, 0.8)};
  EXPECT_EQ(command({"bank-card", "--format", "jsonl", "a.jpg"}), 0);
  EXPECT_EQ(command.out, R"({"file":"a.jpg","kind":"bank-card","result":{"cardNumber":"6222 0212 3456 7890",)"
                         R"("rawCardNumber":"6222021234567890","bankName":null,"cardType":"预付卡",)"
                         R"("cardholderName":null},"checks":{"luhn":false}})"
                         "\n");
  EXPECT_EQ(command({"bank-card", "a.jpg"}), 0);
  EXPECT_NE(command.out.find("! the check digit is wrong"), std::string::npos);
  command.engine->script = {{}, command.engine->blocks};
  EXPECT_EQ(command({"bank-card", "--stages", "--debug-images", TemporaryFolder().path().string(), "--format", "jsonl",
                     "a.jpg"}),
            0);
  EXPECT_EQ(command.lines().at(0)["stage"], "retry");
  EXPECT_FALSE(command.options.photoFolder.empty());
}

TEST(PictureCommands, severalPhotosOfOneBankCardGiveOneAnswer) {
  using Blocks = std::vector<RecognizedText>;
  const Blocks doubtful{test::textBlock("6222 0212 3456 7890", 0.5, 0.5)};
  const Blocks good{test::textBlock("6222 0212 3456 7894", 0.5, 0.5)};
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
  const Blocks start{test::textBlock("6222", 0.2, 0.7), test::textBlock("22202123", 0.4, 0.5)};
  const Json fused =
      answer({start, {}, {test::textBlock("2123456", 0.5, 0.5)}, {}, {test::textBlock("34567894", 0.5, 0.5)}, {}},
             {"a.jpg", "b.jpg", "c.jpg"});
  EXPECT_EQ(fused["result"]["cardNumber"], "6222 0212 3456 7894");
  EXPECT_EQ(fused["checks"]["luhn"], true);
}

TEST(PictureCommands, codesAndTextHaveNoChecks) {
  CommandRun command;
  command.barcodes->codes = {{"6901234567892", {"VNBarcodeSymbologyEAN13"}, {0.1, 0.1, 0.5, 0.2}}};
  EXPECT_EQ(command({"code", "--format", "jsonl", "a.png"}), 0);
  EXPECT_EQ(command.out, R"({"file":"a.png","kind":"code","result":{"payload":"6901234567892","symbology":"EAN-13"}})"
                         "\n");
  command.engine->blocks = {test::textBlock("甲", 0.2, 0.2), test::textBlock("乙", 0.5, 0.2),
                            test::textBlock("丙", 0.2, 0.6)};
  EXPECT_EQ(command({"text", "--format", "jsonl", "a.png"}), 0);
  EXPECT_EQ(command.lines().at(0)["result"].dump(), R"({"text":"甲 乙\n丙"})");
}

TEST(PictureCommands, aPictureThatFailsTellsWhyAndTheOthersGoOn) {
  CommandRun command;
  command.engine->blocks = portraitSide();
  EXPECT_EQ(command({"id-front", "--format", "jsonl", "a.jpg", "bad.jpg", "b.jpg"}), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[1]["file"], "bad.jpg");
  EXPECT_EQ(lines[1]["error"]["code"], "invalid_image");
  EXPECT_EQ(lines[1]["error"]["context"]["reason"], "not a picture");
  EXPECT_TRUE(lines[2].contains("result"));

  EXPECT_EQ(command({"id-back", "--format", "jsonl", "a.jpg"}), someNotRecognized);
  EXPECT_EQ(command.lines().at(0)["error"]["context"]["detected_scene"], "身份证正面");
}

TEST(PictureCommands, jsonIsOneArrayWhateverTheNumberOfPictures) {
  CommandRun command;
  command.engine->blocks = portraitSide();
  for (const std::size_t count : {1U, 3U}) {
    std::vector<std::string> words{"id-front", "--format", "json"};
    words.insert(words.end(), count, "a.jpg");
    command(words);
    const Json answer = Json::parse(command.out);
    EXPECT_TRUE(answer.is_array());
    EXPECT_EQ(answer.size(), count);
  }
}

TEST(PictureCommands, answersKeepTheOrderOfTheFilesWhenSeveralAreReadAtOnce) {
  CommandRun command;
  command.barcodes->codes = {{"1", {"VNBarcodeSymbologyQR"}, {}}};
  std::vector<std::string> words{"code", "--jobs", "4", "--format", "jsonl"};
  for (int i = 0; i < 50; ++i) words.push_back((i % 7 == 0 ? "bad" : "ok") + std::to_string(i));
  EXPECT_EQ(command(words), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), 50U);
  for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i]["file"], words[i + 5]);
}

TEST(PictureCommands, theStandardInputIsAPictureToo) {
  CommandRun command;
  command.barcodes->codes = {{"1", {"VNBarcodeSymbologyQR"}, {}}};
  command.input = "bytes";
  EXPECT_EQ(command({"code", "-"}), 0);
  command.input.clear();
  EXPECT_EQ(command({"code", "--format", "jsonl", "-"}), someNotRecognized);
  EXPECT_EQ(command.lines().at(0)["error"]["context"]["reason"], "the file is empty");
}

TEST(PictureCommands, missingOrBrokenModelsAreAnIncompleteInstallation) {
  CommandRun command;
  command.missing = {"rec.onnx: no such file"};
  EXPECT_EQ(command({"id-front", "a.jpg"}), incompleteInstallation);
  EXPECT_EQ(command.out, "");
  EXPECT_NE(command.err.find("rec.onnx: no such file"), std::string::npos);
  EXPECT_NE(command.err.find("tools/setup"), std::string::npos);
  EXPECT_NE(command({"code", "a.jpg"}), incompleteInstallation) << "codes need no model";

  command.missing.clear();
  command.broken = {"rec.onnx: not a model"};
  EXPECT_NE(command({"id-front", "a.jpg"}), incompleteInstallation) << "the engine did not complain";
  command.engine->failure = "rec.onnx cannot be loaded";
  EXPECT_EQ(command({"id-front", "--format", "jsonl", "a.jpg"}), incompleteInstallation);
  EXPECT_EQ(command.lines().at(0)["error"]["code"], "recognition_failed");
}

TEST(PictureCommands, aStoppedBatchWritesWholeAnswersAndSaysThatItWasStopped) {
  CommandRun command;
  command.stop = true;
  EXPECT_EQ(command({"code", "--format", "json", "a.jpg", "b.jpg"}), interrupted);
  EXPECT_EQ(command.out, "[]\n");
}

TEST(PictureCommands, progressIsShownForSeveralPicturesOnATerminalOnly) {
  for (const auto& [terminal, count, shown] :
       {std::tuple{true, 2U, true}, std::tuple{true, 1U, false}, std::tuple{false, 2U, false}}) {
    CommandRun command;
    command.showsProgress = terminal;
    std::vector<std::string> words{"code"};
    words.insert(words.end(), count, "a.jpg");
    command(words);
    EXPECT_EQ(command.err.find("1 / 2") != std::string::npos, shown) << terminal << count;
  }
}

TEST(Annotation, writesAPictureForEachInputUnderANameOfItsOwn) {
  const TemporaryFolder folder;
  CommandRun command;
  command.engine->blocks = portraitSide();
  EXPECT_EQ(command({"id-front", "--annotate", (folder.path() / "new").string(), "x/a.jpg", "y/a.png", "b.jpg"}), 0);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "new"))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"a-annotated-2.jpg", "a-annotated.jpg", "b-annotated.jpg"}));
}

TEST(Annotation, aFolderThatCannotBeWrittenIsSaidBeforeTheWorkStarts) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file", "in the way");
  CommandRun command;
  EXPECT_EQ(command({"id-front", "--annotate", file, "a.jpg", "b.jpg"}), usageError);
  EXPECT_EQ(command.out, "");
  EXPECT_EQ(std::ranges::count(command.err, '\n'), 1);
  EXPECT_TRUE(command.engine->requests.empty());
}

TEST(Quality, tellsHowTheScannerWouldJudgeTheFrame) {
  CommandRun command;
  EXPECT_EQ(command({"quality", "--format", "jsonl", "a.jpg"}), 0);
  const Json result = command.lines().at(0)["result"];
  EXPECT_EQ(result["isGoodForCapture"], result["qualityHint"].is_null()) << result;
}

TEST(Stats, showsTheMeasuresAndBothEnhancements) {
  CommandRun command;
  EXPECT_EQ(command({"stats", "--format", "jsonl", "a.jpg"}), 0);
  const Json result = command.lines().at(0)["result"];
  EXPECT_EQ(result["width"], 40);
  EXPECT_EQ(result["height"], 30);
  for (const char* measure : {"mean", "std", "darkRatio", "brightRatio"}) EXPECT_TRUE(result[measure].is_number());
  for (const char* scene : {"idCard", "bankCard"}) EXPECT_TRUE(result[scene]["contrast"].is_number());
}

}  // namespace
}  // namespace pravik::cli
