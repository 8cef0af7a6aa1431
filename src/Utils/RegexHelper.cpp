#include "Utils/RegexHelper.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace pravik {

namespace {

/// A search gives up after this many steps of the engine's clock, ten thousand backtracking points each: less than a
/// second, and enough to find what stands behind a million digits in a row.
constexpr std::int32_t maximumSteps = 1000;
/// Each backtracking point holds a copy of what all groups have matched: with as many groups it costs twice as much.
constexpr std::int32_t groupsThatDoubleAStep = 4;
/// Bytes of backtracking points that a search may keep; a kept matcher does not give them back.
constexpr std::int32_t maximumStackBytes = 1 << 20;

/// The most patterns that a thread keeps compiled; far more than the library has.
constexpr std::size_t maximumKeptPatterns = 256;

/// A matcher of this thread for the pattern; nullptr when the pattern does not compile. Kept, because compiling a
/// pattern costs a hundred times more than searching a line with it.
icu::RegexMatcher* matcherFor(std::string_view pattern) {
  thread_local std::map<std::string, std::unique_ptr<icu::RegexMatcher>, std::less<>> kept;
  if (const auto found = kept.find(pattern); found != kept.end()) return found->second.get();

  UErrorCode status = U_ZERO_ERROR;
  auto matcher = std::make_unique<icu::RegexMatcher>(icu::UnicodeString::fromUTF8(pattern), 0, status);
  if (U_SUCCESS(status)) {
    const std::int32_t costOfAStep = 1 + matcher->groupCount() / groupsThatDoubleAStep;
    matcher->setTimeLimit(std::max(1, maximumSteps / costOfAStep), status);
    matcher->setStackLimit(maximumStackBytes, status);
  }
  if (U_FAILURE(status)) matcher.reset();
  if (kept.size() >= maximumKeptPatterns) kept.clear();
  return kept.emplace(pattern, std::move(matcher)).first->second.get();
}

/// One pattern over one text. Results are cut from the text by the byte, so that whatever it holds comes back as is.
/// Only one search with the same pattern may go on at a time in a thread.
class Search {
 public:
  Search(std::string_view pattern, std::string_view text)
      : text_(text),
        bytes_(utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status_)),
        matcher_(matcherFor(pattern)) {
    if (isReady()) matcher_->reset(bytes_.getAlias());
  }

  /// Goes on to the next match; false when there is none or the search failed.
  bool next() { return isReady() && matcher_->find(status_) && U_SUCCESS(status_); }

  /// The text with every match replaced; the text itself, to the byte, without a match or when the search failed.
  std::string replaceAll(std::string_view replacement) {
    if (!next()) return std::string(text_);
    const icu::UnicodeString result = matcher_->replaceAll(icu::UnicodeString::fromUTF8(replacement), status_);
    std::string replaced;
    return U_SUCCESS(status_) ? result.toUTF8String(replaced) : std::string(text_);
  }

  std::int32_t groupCount() const { return matcher_->groupCount(); }

  /// A group of the current match; absent when it took no part or does not exist.
  std::optional<std::string> group(std::int32_t number) const {
    UErrorCode status = U_ZERO_ERROR;
    const std::int64_t start = matcher_->start64(number, status);
    const std::int64_t end = matcher_->end64(number, status);
    if (U_FAILURE(status) || start < 0) return std::nullopt;
    return std::string(text_.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
  }

 private:
  bool isReady() const { return matcher_ != nullptr && U_SUCCESS(status_); }

  std::string_view text_;
  UErrorCode status_ = U_ZERO_ERROR;
  icu::LocalUTextPointer bytes_;
  icu::RegexMatcher* matcher_;
};

}  // namespace

bool RegexHelper::matches(std::string_view pattern, std::string_view text) {
  return Search(pattern, text).next();
}

std::optional<std::string> RegexHelper::firstMatch(std::string_view pattern, std::string_view text) {
  return captureGroup(0, pattern, text);
}

std::vector<std::string> RegexHelper::allMatches(std::string_view pattern, std::string_view text) {
  Search search(pattern, text);
  std::vector<std::string> result;
  while (search.next()) {
    if (auto match = search.group(0)) result.push_back(std::move(*match));
  }
  return result;
}

std::optional<std::string> RegexHelper::captureGroup(int group, std::string_view pattern, std::string_view text) {
  Search search(pattern, text);
  return search.next() ? search.group(group) : std::nullopt;
}

std::vector<std::string> RegexHelper::allCaptureGroups(std::string_view pattern, std::string_view text) {
  Search search(pattern, text);
  if (!search.next()) return {};
  std::vector<std::string> result;
  for (std::int32_t number = 1; number <= search.groupCount(); ++number) {
    if (auto group = search.group(number)) result.push_back(std::move(*group));
  }
  return result;
}

std::string RegexHelper::replace(std::string_view pattern, std::string_view text, std::string_view replacement) {
  return Search(pattern, text).replaceAll(replacement);
}

}  // namespace pravik
