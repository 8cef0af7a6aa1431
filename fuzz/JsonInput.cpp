#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/pravik/CommandLine.h"
#include "backends/json/ObservationsJson.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

namespace {

void requireInRange(std::string_view json) {
  const auto blocks = parseObservations(json);
  fuzz::require(blocks || !blocks.error().empty(), "a refusal gives its reason");
  if (!blocks) return;
  const auto within = [](double value) { return -0.01 <= value && value <= 1.0101; };
  for (const auto& [text, confidence, box] : *blocks) {
    fuzz::require(0 <= confidence && confidence <= 1, "a confidence lies within 0...1");
    fuzz::require(within(box.x) && within(box.y) && within(box.x + box.width) && within(box.y + box.height) &&
                      box.width >= 0 && box.height >= 0,
                  "a box lies on the picture");
  }
}

std::string output(const std::vector<std::string>& words, const std::string& input) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  const int status =
      cli::run(words, {.in = in, .out = out, .err = err, .makePlatform = {}, .missingModels = {}, .brokenModels = {}});
  fuzz::require(status == cli::allRecognized || status == cli::someNotRecognized, "bad input is no failure");
  return out.str();
}

}  // namespace

// What is handed to `pravik parse`: objects one a line, and the whole as one object.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr std::array kinds{"id-front", "id-back", "bank-card"};
  const std::string input(fuzz::asText(data, size));
  const std::string kind = kinds[size % kinds.size()];
  std::vector<std::string_view> lines = splitAtLineFeeds(input);
  if (lines.back().empty()) lines.pop_back();
  for (const std::string_view line : lines) requireInRange(line);

  const std::string answerText = output({"parse", kind, "--format", "jsonl"}, input);
  std::vector<std::string_view> answers = splitAtLineFeeds(answerText);
  fuzz::require(answers.back().empty() && answers.size() - 1 == lines.size(), "every line has one answer");
  answers.pop_back();
  for (const std::string_view line : answers) {
    const auto answer = nlohmann::json::parse(line);
    fuzz::require(answer.contains("result") != answer.contains("error"), "an answer is a result or an error");
  }
  fuzz::require(nlohmann::json::parse(output({"parse", kind, "--format", "json"}, input)).size() == 1,
                "the whole has one answer");
  return 0;
}
