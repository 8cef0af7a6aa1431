#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/pravik/ObservationCommands.h"
#include "backends/json/ObservationsJson.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

namespace {

void requireInRange(std::string_view json) {
  const auto blocks = parseObservations(json);
  fuzz::require(blocks || !blocks.error().empty(), "a refusal gives its reason");
  if (!blocks) return;
  const auto within = [](double value) { return 0 <= value && value <= 1 + 1e-9; };
  for (const auto& [text, confidence, box, direction] : *blocks) {
    fuzz::require(!direction, "no direction is told");
    fuzz::require(0 <= confidence && confidence <= 1, "a confidence lies within 0...1");
    fuzz::require(within(box.x) && within(box.y) && within(box.x + box.width) && within(box.y + box.height) &&
                      box.width >= 0 && box.height >= 0,
                  "a box lies on the picture");
  }
}

std::string answers(const cli::ObservationCommand& command, cli::Format format, const std::string& input) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  const cli::Host host{.in = in, .out = out, .err = err, .makePlatform = {}, .missingModels = {}, .brokenModels = {}};
  const auto status = cli::answerObservations(command, "-", TextHandling::corrected,
                                              {.format = format, .annotate = {}, .models = {}}, host);
  fuzz::require(status == cli::allRecognized || status == cli::someNotRecognized, "bad input is no failure");
  return out.str();
}

}  // namespace

// What is handed to `pravik parse`: objects one a line, and the whole as one object.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(fuzz::asText(data, size));
  const cli::ObservationCommand& command = cli::parseCommands()[size % cli::parseCommands().size()];
  std::vector<std::string_view> lines = splitAtLineFeeds(input);
  if (lines.back().empty()) lines.pop_back();
  for (const std::string_view line : lines) requireInRange(line);

  const std::string text = answers(command, cli::Format::jsonl, input);
  std::vector<std::string_view> answered = splitAtLineFeeds(text);
  fuzz::require(answered.back().empty() && answered.size() - 1 == lines.size(), "every line has one answer");
  answered.pop_back();
  for (const std::string_view line : answered) {
    const auto answer = nlohmann::json::parse(line);
    fuzz::require(answer.contains("result") != answer.contains("error"), "an answer is a result or an error");
  }
  const auto whole = nlohmann::json::parse(answers(command, cli::Format::json, input));
  fuzz::require(whole.size() == 1, "the whole has one answer");
  return 0;
}
