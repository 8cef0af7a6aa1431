#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "Utils/Format.h"
#include "Utils/Text.h"
#include "blackbox/Tool.h"
#include "support/TemporaryFolder.h"

namespace pravik::cli {
namespace {

using Level = OCRLogger::Level;
using nlohmann::json;

/// The least level at which a value of a record stands in the log.
constexpr std::tuple<const char*, const char*, Level> loggedFields[] = {{"id-front", "idNumber", Level::info},
                                                                        {"id-front", "name", Level::debug},
                                                                        {"id-front", "address", Level::debug},
                                                                        {"id-back", "issuingAuthority", Level::debug},
                                                                        {"id-back", "endDate", Level::debug},
                                                                        {"bank-card", "rawCardNumber", Level::debug},
                                                                        {"bank-card", "cardholderName", Level::debug},
                                                                        {"bank-card", "bankName", Level::debug},
                                                                        {"code", "payload", Level::info}};

constexpr std::array kinds{"id-front", "id-back", "bank-card", "code"};

/// A photo of each kind whose record lacks nothing.
json photoOf(std::string_view kind) {
  const std::vector<json> all = truths();
  return *std::ranges::find_if(all, [&](const json& truth) {
    const auto isNull = [](const json& value) { return value.is_null(); };
    return truth["kind"] == kind && std::ranges::none_of(truth["result"], isNull);
  });
}

std::string pathOf(const json& truth) {
  return (samples / truth["file"].get<std::string>()).string();
}

/// Spaces and the separators of dates stand elsewhere in the log than in a record.
std::string core(const std::string& text) {
  std::string rest = removingAll(text, " ");
  for (const std::string_view separator : {".", "-"}) rest = removingAll(rest, separator);
  return rest;
}

bool tells(const std::string& text, const json& value) {
  return value.is_string() && core(text).find(core(value.get<std::string>())) != std::string::npos;
}

/// What of a record stands in a text; what is on every card, and single characters, do not count.
std::vector<std::string> cardDataIn(const std::string& text, const json& record) {
  std::vector<std::string> found;
  for (const auto& [field, value] : record.items())
    if (value.is_string() && value.get<std::string>().size() > 6 && tells(text, value)) found.push_back(field);
  return found;
}

/// Runs the built tool at home in an empty folder, where no byte may be written to any file; gives what it wrote to
/// standard error, and its exit status.
ToolRun runAtHome(const std::filesystem::path& home, const std::string& arguments) {
  const std::string variables = formatted("HOME={0} TMPDIR={0} XDG_RUNTIME_DIR={0}", home.string());
  const std::string command =
      formatted("cd {} && ulimit -f 0 && {} {} {} 2>&1 >/dev/null", home.string(), variables, PRAVIK_TOOL, arguments);
  FILE* pipe = ::popen(command.c_str(), "r");
  ToolRun run;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) run.err += static_cast<char>(c);
  run.status = WEXITSTATUS(::pclose(pipe));
  return run;
}

TEST(Privacy, ARunWritesItsAnswerAndNothingElse) {
  const test::TemporaryFolder home;
  for (const std::string kind : kinds) {
    const ToolRun tool = runAtHome(home.path(), kind + " " + pathOf(photoOf(kind)));
    EXPECT_EQ(tool.err, "") << kind;
    EXPECT_EQ(tool.status, allRecognized) << kind;
    EXPECT_TRUE(std::filesystem::is_empty(home.path())) << kind;
  }
}

TEST(Privacy, TheLogTellsWhatIsOnACardFromTheLevelOnThatTheMessagesName) {
  for (const std::string kind : kinds) {
    const json truth = photoOf(kind);
    for (const Level level : {Level::error, Level::warning, Level::info, Level::debug}) {
      const std::string levelName(OCRLogger::caseName(level));
      const std::string log = runTool({kind, "--log-level", levelName, pathOf(truth)}).err;
      for (const auto& [kindOfField, field, firstAt] : loggedFields) {
        if (kindOfField != kind) continue;
        EXPECT_EQ(tells(log, truth["result"][field]), level >= firstAt) << kind << " " << field << " at " << levelName;
      }
      if (level >= Level::info) continue;
      EXPECT_EQ(cardDataIn(log, truth["result"]), std::vector<std::string>()) << kind << " at " << levelName;
    }
  }
}

TEST(Privacy, APortraitSideWithoutNumberIsLoggedWholeAsAWarning) {
  const test::TemporaryFolder folder;
  const std::string file = folder.write("blocks.json", R"({"observations":[{"text":"姓名 张三丰","confidence":1,
                                        "boundingBox":{"x":0.1,"y":0.8,"width":0.2,"height":0.05}}]})");
  for (const auto& [level, isTold] : {std::pair{"error", false}, {"warning", true}}) {
    const ToolRun tool = runTool({"parse", "id-front", "--log-level", level, file});
    EXPECT_EQ(tool.err.find("张三丰") != std::string::npos, isTold) << level;
  }
}

TEST(Privacy, AnErrorTellsNothingOfTheCard) {
  for (const std::string kind : kinds) {
    const json truth = photoOf(kind);
    for (const std::string other : kinds) {
      if (other == kind) continue;
      const ToolRun tool = runTool({other, "--format", "jsonl", "--log-level", "error", pathOf(truth)});
      const json answer = tool.answers().at(0);
      ASSERT_TRUE(answer.contains("error")) << kind << " as " << other;
      EXPECT_EQ(cardDataIn(answer["error"].dump() + tool.err, truth["result"]), std::vector<std::string>())
          << kind << " as " << other;
    }
  }
}

TEST(Privacy, BrokenInputIsNotQuoted) {
  const test::TemporaryFolder folder;
  for (const std::string end : {"", R"(\x)", R"(", x)", R"("}], "observations": [{"text": 11010119900307123X)"}) {
    const std::string file =
        folder.write("broken.json", R"({"observations":[{"text":"姓名 张三丰 11010119900307123X)" + end);
    const ToolRun tool = runTool({"parse", "id-front", "--format", "jsonl", file});
    EXPECT_EQ(tool.answers().at(0)["error"]["code"], "invalid_input");
    for (const char* piece : {"张三丰", "1990"})
      EXPECT_EQ((tool.out + tool.err).find(piece), std::string::npos) << tool.out;
  }
}

}  // namespace
}  // namespace pravik::cli
