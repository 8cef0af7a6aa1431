#include "Parsers/CardNumberFusion.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardText.h"
#include "Parsers/OCRDigits.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

constexpr std::size_t shortestFragment = 4;
constexpr std::size_t longestFragment = 19;
/// One overlapping digit agrees by chance once in ten times.
constexpr std::size_t minimumHintOverlap = 2;
constexpr std::size_t minimumOverlap = 4;
/// More open digits than two have several solutions, and are not worth looking for them.
constexpr std::size_t maximumOpenDigits = 2;

constexpr char unknown = '?';

/// A fragment and in how many readings it was found.
using CountedFragments = std::map<std::string, int>;

struct PlacedFragment {
  std::string digits;
  std::size_t offset;
  int votes;
};

using DigitVotes = std::array<int, 10>;
/// The votes for each digit at each place of the number.
using Ballot = std::vector<DigitVotes>;

}  // namespace

std::vector<std::string> extractCardNumberFragments(const Observations& observations) {
  std::vector<std::string> fragments;
  std::set<std::string> seen;
  const auto take = [&](const std::string& digits) {
    if (digits.size() < shortestFragment || digits.size() > longestFragment) return;
    if (seen.insert(digits).second) fragments.push_back(digits);
  };
  const auto takeReadings = [&](std::string_view text) {
    for (const std::string& run : RegexHelper::allMatches(R"(\d+)", text)) take(asciiDigits(run));
    // A word has letters that look like digits; a piece of a card number is digits for the most part. A character
    // that stands for no digit leaves a hole, and what follows it would stand in the wrong place.
    const std::size_t length = characterCount(removingAll(text, "-"));
    if (asciiDigits(text).size() * 2 < length) return;
    for (const OCRDigitVariant& variant : ocrCorrectedVariants(text))
      if (variant.digits.size() == length) take(variant.digits);
  };
  for (const Observations& row : bankCardRows(observations)) {
    std::string whole;
    for (const auto& block : row) {
      for (const std::string_view group : splitAtWhitespace(block.text)) {
        takeReadings(group);
        whole += group;
      }
    }
    takeReadings(whole);
  }
  return fragments;
}

namespace {

/// Where a fragment stands for certain, before anything else is placed.
std::optional<std::size_t> anchoredOffset(std::string_view fragment, std::span<const std::string> hints,
                                          std::size_t targetLength) {
  if (fragment.size() == targetLength && isValidCardNumber(fragment)) return 0;
  std::optional<std::size_t> offset;
  for (const std::string& hint : hints) {
    const auto candidate = binSuffixOffset(fragment, hint, minimumHintOverlap);
    if (!candidate || *candidate + fragment.size() > targetLength) continue;
    // A row that is one digit short has lost one somewhere; from there on its digits stand in the wrong places.
    if (*candidate == 0 && fragment.size() + 1 == targetLength) continue;
    if (offset && *offset != *candidate) return std::nullopt;
    offset = candidate;
  }
  return offset;
}

Ballot countVotes(std::span<const PlacedFragment> placed, std::size_t targetLength) {
  Ballot ballot(targetLength, DigitVotes{});
  for (const PlacedFragment& fragment : placed)
    for (std::size_t i = 0; i < fragment.digits.size(); ++i)
      ballot[fragment.offset + i][static_cast<std::size_t>(fragment.digits[i] - '0')] += fragment.votes;
  return ballot;
}

/// The digits with the most votes; none for a place without a vote.
std::string leadingDigits(const DigitVotes& votes) {
  const int most = *std::ranges::max_element(votes);
  std::string digits;
  if (most == 0) return digits;
  for (std::size_t digit = 0; digit < votes.size(); ++digit)
    if (votes[digit] == most) digits += static_cast<char>('0' + digit);
  return digits;
}

/// The number as far as it is known, with a mark where there is no vote or a tie.
std::string consensus(const Ballot& ballot) {
  std::string number;
  for (const DigitVotes& votes : ballot) {
    const std::string digits = leadingDigits(votes);
    number += digits.size() == 1 ? digits.front() : unknown;
  }
  return number;
}

/// Whether the fragment agrees with every known digit at this offset, and with at least four.
bool fits(std::string_view fragment, std::size_t offset, std::string_view known) {
  std::size_t overlap = 0;
  for (std::size_t i = 0; i < fragment.size(); ++i) {
    if (known[offset + i] == unknown) continue;
    if (known[offset + i] != fragment[i]) return false;
    ++overlap;
  }
  return overlap >= minimumOverlap;
}

/// The only offset at which the fragment fits; absent when there is none or there are several.
std::optional<std::size_t> onlyFittingOffset(std::string_view fragment, std::string_view known) {
  std::optional<std::size_t> found;
  for (std::size_t offset = 0; offset + fragment.size() <= known.size(); ++offset) {
    if (!fits(fragment, offset, known)) continue;
    if (found) return std::nullopt;
    found = offset;
  }
  return found;
}

std::vector<PlacedFragment> placed(CountedFragments fragments, std::span<const std::string> hints,
                                   std::size_t targetLength) {
  std::vector<PlacedFragment> result;
  std::erase_if(fragments, [&](const auto& fragment) {
    const auto offset = anchoredOffset(fragment.first, hints, targetLength);
    if (offset) result.push_back({fragment.first, *offset, fragment.second});
    return offset.has_value();
  });

  // Each round may make known what places the next fragment; it ends at the latest when every digit is known.
  std::string before;
  std::string known = consensus(countVotes(result, targetLength));
  while (known != before) {
    std::erase_if(fragments, [&](const auto& fragment) {
      const auto offset = onlyFittingOffset(fragment.first, known);
      if (offset) result.push_back({fragment.first, *offset, fragment.second});
      return offset.has_value();
    });
    before = std::exchange(known, consensus(countVotes(result, targetLength)));
  }
  return result;
}

/// The only valid number with these choices for each place; absent when there is none or there are several.
std::optional<std::string> onlySolution(std::span<const std::string> choices) {
  std::vector<std::string> numbers{""};
  for (const std::string& digits : choices) {
    std::vector<std::string> longer;
    for (const std::string& number : numbers)
      for (const char digit : digits) longer.push_back(number + digit);
    numbers = std::move(longer);
  }
  std::erase_if(numbers, [](const std::string& number) { return !isValidCardNumber(number) || !luhnCheck(number); });
  if (numbers.size() != 1) return std::nullopt;
  return numbers.front();
}

}  // namespace

std::optional<std::string> fuseCardNumber(std::span<const std::string> fragments, std::span<const std::string> binHints,
                                          std::size_t targetLength) {
  CountedFragments counted;
  for (const std::string& fragment : fragments)
    if (fragment.size() >= shortestFragment && fragment.size() <= targetLength) ++counted[fragment];

  const std::vector<std::string> hints = plausibleBINHints(binHints);
  const Ballot ballot = countVotes(placed(std::move(counted), hints, targetLength), targetLength);

  std::vector<std::string> choices;
  std::size_t open = 0;
  for (const DigitVotes& votes : ballot) {
    std::string digits = leadingDigits(votes);
    if (digits.size() != 1) ++open;
    choices.push_back(digits.empty() ? "0123456789" : std::move(digits));
  }
  OCRLogger::debug([&] { return formatted("多帧融合: {} ({} 位未定)", consensus(ballot), open); });
  if (open > maximumOpenDigits) return std::nullopt;
  return onlySolution(choices);
}

}  // namespace pravik
