#include <gtest/gtest.h>

#include "Utils/Text.h"
#include "backends/json/ObservationsJson.h"
#include "unit/cli/CommandRun.h"

namespace pravik::cli {
namespace {

std::string block(const std::string& text, const std::string& y, const std::string& confidence = "0.9") {
  return R"({"text":")" + text + R"(","confidence":)" + confidence + R"(,"boundingBox":{"x":0.1,"y":)" + y +
         R"(,"width":0.3,"height":0.05}})";
}

std::string line(const std::vector<std::string>& blocks) {
  return R"({"observations":[)" + joined(blocks, ",") + "]}";
}

const std::string portrait = line({block("姓名 张三", "0.8"), block("公民身份号码 11010119900307123X", "0.1")});

TEST(ParseCommand, AnswersEachLineInOrder) {
  CommandRun command;
  command.input = portrait + "\n" + line({}) + "\n" + portrait + "\n";
  EXPECT_EQ(command({"parse", "id-front", "--format", "jsonl"}), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0]["result"]["name"], "张三");
  EXPECT_EQ(lines[1]["error"]["code"], "insufficient_text");
  EXPECT_EQ(lines[2], lines[0]);
}

TEST(ParseCommand, ReadsOneObjectOverSeveralLinesFromAFile) {
  const TemporaryFolder folder;
  const std::string spread = replacingAll(portrait, ",", ",\n");
  CommandRun command;
  EXPECT_EQ(command({"parse", "id-front", "--format", "json", folder.write("blocks.json", spread)}), 0);
  EXPECT_EQ(Json::parse(command.out).at(0)["result"]["idNumber"], "11010119900307123X");
}

TEST(ParseCommand, AFileThatCannotBeReadIsAnError) {
  const TemporaryFolder folder;
  for (const std::string& file : {std::string("no/such/file"), folder.path().string()}) {
    CommandRun command;
    EXPECT_EQ(command({"parse", "id-back", "--format", "jsonl", file}), someNotRecognized) << file;
    EXPECT_EQ(command.lines().at(0)["error"]["code"], "invalid_input") << file;
  }
}

TEST(ParseCommand, ALineThatIsNoSuchObjectIsAnsweredAndTheRunGoesOn) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", "unexpected end"},
      {"hello", "not valid JSON"},
      {"[]", "not an object"},
      {"{}", "lacks \"observations\""},
      {R"({"observations":{}})", "not an array"},
      {R"({"observations":[1]})", "observation 0 is not an object"},
      {R"({"observations":[{"text":7}]})", "\"text\" is not a string"},
      {R"({"observations":[{"text":"a"}]})", "lacks \"confidence\""},
      {R"({"observations":[{"text":"a","confidence":"high"}]})", "\"confidence\" is not a number"},
      {R"({"observations":[{"text":"a","confidence":0.5}]})", "lacks \"boundingBox\""},
      {line({block("a", "0.5", "NaN")}), "not valid JSON"},
      {line({block("a", "0.5", "Infinity")}), "not valid JSON"},
      {line({block("a", "0.5", "1e999")}), "number overflow"},
      {line({block("a", "0.5", "1.5")}), "outside 0...1"},
      {line({block("a", "40")}), "outside 0...1"},
      {line({block("a", "-0.5")}), "outside 0...1"},
      {R"({"observations":[{"text":"a","confidence":1,"boundingBox":{"x":0.5,"y":0,"width":-0.1,"height":0.1}}]})",
       "outside 0...1"},
      {R"({"observations":[],"observations":[]})", "stands twice"},
      {line({block("\xC3\x28", "0.5")}), "UTF-8"},
      {line({block("\\ud800", "0.5")}), "surrogate"},
      {std::string(100'000, '['), "nested deeper"},
      {portrait + portrait, "not valid JSON"},
  };
  CommandRun command;
  for (const auto& [bad, ignored] : cases) command.input += bad + "\n";
  command.input += portrait;
  EXPECT_EQ(command({"parse", "id-front", "--format", "jsonl", "-"}), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), cases.size() + 1);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const Json& error = lines[i]["error"];
    EXPECT_EQ(error["code"], "invalid_input") << cases[i].first;
    EXPECT_NE(error["message"].get<std::string>().find(cases[i].second), std::string::npos)
        << cases[i].first.substr(0, 200) << "\n"
        << error;
    EXPECT_LT(error["message"].get<std::string>().size(), 300U);
  }
  EXPECT_TRUE(lines.back().contains("result"));
}

TEST(ParseCommand, NumbersALittleOutsideTheirRangeAreMovedToItsEnd) {
  const auto observed = [](double confidence, double x, double y, double width, double height) {
    const auto observations =
        parseObservations(Json{{"observations",
                                {{{"text", "a"},
                                  {"confidence", confidence},
                                  {"boundingBox", {{"x", x}, {"y", y}, {"width", width}, {"height", height}}}}}}}
                              .dump());
    return observations.value_or(Observations{});
  };
  EXPECT_EQ(observed(1.02, -0.03125, -0.03125, 1.0625, 0.53125), (Observations{{"a", 1, {0, 0, 1, 0.5}}}));
  EXPECT_EQ(observed(-0.01, 0.75, 0.5, 0.28, 0.54), (Observations{{"a", 0, {0.75, 0.5, 0.25, 0.5}}}));
  EXPECT_EQ(observed(0.5, 1.01, 0.125, 0.02, 0.25), (Observations{{"a", 0.5F, {1, 0.125, 0, 0.25}}}));
  EXPECT_EQ(observed(0.5, 0.3, 0.1, 0.6, 0.3), (Observations{{"a", 0.5F, {0.3, 0.1, 0.6, 0.3}}})) << "to the last bit";
  EXPECT_TRUE(observed(1.1, 0, 0, 1, 1).empty());
  EXPECT_TRUE(observed(1, 0, 0.5, 1, 0.6).empty());
  EXPECT_TRUE(observed(1, 0.5, 0, -0.01, 1).empty());
}

TEST(ParseCommand, UnusualTextAndBoxesOverTheEdgeByARoundingErrorAreRead) {
  for (const std::string& unusual :
       {block(std::string(1'000'000, '1'), "0.5"), block("姓名 𠮷野\u0301", "0.5"), block("👨‍👩‍👧", "0.5"),
        block("\\u0000", "0.5"),
        std::string(R"({"text":"a","confidence":1,)"
                    R"("boundingBox":{"x":-0.000001,"y":0,"width":1.000002,"height":1.0000001}})")}) {
    CommandRun command;
    command.input = line({unusual, block("公民身份号码 11010119900307123X", "0.1")});
    EXPECT_EQ(command({"parse", "id-front", "--format", "jsonl"}), 0) << unusual.substr(0, 60);
    EXPECT_EQ(command.lines().at(0)["result"]["idNumber"], "11010119900307123X") << unusual.substr(0, 60);
  }
}

TEST(SceneCommand, AcceptsOrTellsWhatTheTextIs) {
  CommandRun command;
  command.input = portrait + "\n" + line({block("VALID THRU", "0.5")}) + "\nnonsense\n";
  EXPECT_EQ(command({"scene", "idCardFront", "--format", "jsonl"}), someNotRecognized);
  const auto lines = command.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0].dump(), R"({"result":{"accepted":true}})");
  EXPECT_EQ(lines[1]["error"]["code"], "scene_mismatch");
  EXPECT_EQ(lines[1]["error"]["message"], "场景不匹配：期望身份证正面，检测到银行卡");
  EXPECT_EQ(lines[2]["error"]["code"], "invalid_input");

  command.input = portrait;
  EXPECT_EQ(command({"scene", "bankCard"}), someNotRecognized);
  EXPECT_EQ(command({"scene", "idCard"}), 0);
}

}  // namespace
}  // namespace pravik::cli
