#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <set>

#include "blackbox/Tool.h"

namespace pravik::cli {
namespace {

using nlohmann::json;

const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

std::vector<json> truths() {
  std::vector<json> lines;
  std::ifstream file(samples / "truth.jsonl");
  for (std::string line; std::getline(file, line);) lines.push_back(json::parse(line));
  return lines;
}

class Samples : public testing::TestWithParam<json> {};

TEST_P(Samples, areReadAsTheyWereDrawn) {
  const json& truth = GetParam();
  const ToolRun tool =
      runTool({truth["kind"], "--format", "jsonl", (samples / truth["file"].get<std::string>()).string()});
  ASSERT_EQ(tool.status, allRecognized) << tool.out << tool.err;
  const json answer = tool.answers().at(0);
  EXPECT_EQ(answer["kind"], truth["kind"]);
  EXPECT_EQ(answer["result"], truth["result"]);
  const json checks = answer.value("checks", json::object());
  for (const auto& [check, passed] : checks.items()) EXPECT_TRUE(passed == true) << check;
}

std::string nameOf(const testing::TestParamInfo<json>& truth) {
  std::string name = truth.param["file"];
  std::erase_if(name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, Samples, testing::ValuesIn(truths()), nameOf);

TEST(SampleSet, holdsEveryKind) {
  std::set<std::string> kinds;
  for (const json& truth : truths()) kinds.insert(truth["kind"]);
  EXPECT_EQ(kinds, (std::set<std::string>{"bank-card", "code", "id-back", "id-front"}));
}

TEST(SampleSet, isReadAlikeOneByOneAndTogether) {
  std::vector<std::string> words{"id-front", "--format", "jsonl"};
  for (const json& truth : truths())
    if (truth["kind"] == "id-front") words.push_back((samples / truth["file"].get<std::string>()).string());
  const ToolRun alone = runTool(words);
  words.insert(words.begin() + 1, {"--jobs", "3"});
  EXPECT_EQ(runTool(words).out, alone.out);
}

TEST(SampleSet, anotherSideIsRefused) {
  for (const json& truth : truths()) {
    if (truth["level"] != "clean") continue;
    const std::string other = truth["kind"] == "id-front" ? "id-back" : "id-front";
    const ToolRun tool = runTool({other, "--format", "jsonl", (samples / truth["file"].get<std::string>()).string()});
    EXPECT_EQ(tool.status, someNotRecognized);
    EXPECT_EQ(tool.answers().at(0)["error"]["code"], "scene_mismatch") << truth["file"];
  }
}

TEST(SampleSet, aCardHoldsNoCode) {
  for (const json& truth : truths()) {
    if (truth["kind"] == "code") continue;
    const ToolRun tool = runTool({"code", "--format", "jsonl", (samples / truth["file"].get<std::string>()).string()});
    EXPECT_EQ(tool.answers().at(0)["error"]["code"], "insufficient_text") << tool.out;
  }
}

}  // namespace
}  // namespace pravik::cli
