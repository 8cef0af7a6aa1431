#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pravik {

/// Regular expressions in the ICU dialect over UTF-8. `\d` and `\s` know every script, case matters, `.` stops at
/// line ends. `$` also matches before a last line end: a pattern for a whole text stands between `^` and `\z`.
///
/// Nothing throws. A pattern that does not compile, and a search that would take more than a bounded amount of work,
/// match nothing. An ill-formed byte sequence in the text counts as U+FFFD.
class RegexHelper {
 public:
  /// Whether the pattern matches anywhere in the text.
  static bool matches(std::string_view pattern, std::string_view text);
  /// The leftmost match.
  static std::optional<std::string> firstMatch(std::string_view pattern, std::string_view text);
  /// All matches that do not overlap, from left to right.
  static std::vector<std::string> allMatches(std::string_view pattern, std::string_view text);
  /// A group of the first match, 0 for the whole; absent without a match or when the group took no part in it.
  static std::optional<std::string> captureGroup(int group, std::string_view pattern, std::string_view text);
  /// The groups of the first match from 1 on. A group that took no part is left out, so that positions are not
  /// group numbers when there are optional groups.
  static std::vector<std::string> allCaptureGroups(std::string_view pattern, std::string_view text);
  /// The text with every match replaced; `$1` in the replacement stands for group 1. The text unchanged when the
  /// pattern or the replacement is not valid.
  static std::string replace(std::string_view pattern, std::string_view text, std::string_view replacement);
};

}  // namespace pravik
