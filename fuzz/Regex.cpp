#include "Utils/RegexHelper.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

// A line with a pattern, one with a replacement, and the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto [pattern, rest] = fuzz::firstLine(fuzz::asText(data, size));
  const auto [replacement, text] = fuzz::firstLine(rest);
  const auto first = RegexHelper::firstMatch(pattern, text);
  const auto all = RegexHelper::allMatches(pattern, text);
  fuzz::require(first.has_value() == RegexHelper::matches(pattern, text), "what matches has a first match");
  fuzz::require(first.has_value() == !all.empty(), "what matches has matches");
  fuzz::require(!first || *first == all.front(), "the first match is the first of all");
  for (const std::string& match : all)
    fuzz::require(text.find(match) != std::string_view::npos, "a match is cut from the text");
  const auto groups = RegexHelper::allCaptureGroups(pattern, text);
  fuzz::require(first || groups.empty(), "without a match there are no groups");
  if (const auto group = RegexHelper::captureGroup(1, pattern, text))
    fuzz::require(!groups.empty() && groups.front() == *group, "the first group is the first of all");
  const std::string replaced = RegexHelper::replace(pattern, text, replacement);
  fuzz::require(first || replaced == text, "without a match nothing is replaced");
  return 0;
}
