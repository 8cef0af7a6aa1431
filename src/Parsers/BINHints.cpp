#include "Parsers/BINHints.h"

#include <algorithm>

#include "Utils/Text.h"

namespace pravik {

namespace {

/// With as many digits a row is that of the card number, whose groups are no hints.
constexpr std::size_t numberRowDigits = 12;
constexpr std::size_t shortestHint = 4;
constexpr std::size_t longestHint = 5;
constexpr std::string_view allowedFirstDigits = "34569";
/// The hotlines of banks have five digits and begin with these.
constexpr std::string_view hotlineBeginning = "95";
constexpr std::size_t hotlineLength = 5;
constexpr std::size_t maximumHints = 8;

bool isNumberRow(const Observations& row) {
  std::size_t digits = 0;
  for (const auto& block : row) digits += asciiDigits(block.text).size();
  return digits >= numberRowDigits;
}

bool isHotline(std::string_view digits) {
  return digits.size() == hotlineLength && digits.starts_with(hotlineBeginning);
}

std::optional<std::string> hintIn(const Observation& block) {
  const std::string_view text = trimmed(block.text);
  std::string digits = asciiDigits(text);
  if (digits.size() < shortestHint || digits.size() > longestHint) return std::nullopt;
  if (withAsciiDigits(text) != digits) return std::nullopt;
  return digits;
}

}  // namespace

std::vector<std::string> extractBINHints(std::span<const Observations> rows) {
  std::vector<std::string> hints;
  for (const Observations& row : rows) {
    if (isNumberRow(row)) continue;
    for (const auto& block : row)
      if (auto hint = hintIn(block)) hints.push_back(*std::move(hint));
  }
  return hints;
}

std::vector<std::string> plausibleBINHints(std::span<const std::string> hints) {
  std::vector<std::string> plausible;
  for (const std::string& hint : hints) {
    if (plausible.size() == maximumHints) break;
    if (allowedFirstDigits.find(hint.front()) == std::string_view::npos || isHotline(hint)) continue;
    if (std::ranges::find(plausible, hint) == plausible.end()) plausible.push_back(hint);
  }
  return plausible;
}

std::optional<std::size_t> binSuffixOffset(std::string_view fragment, std::string_view hint,
                                           std::size_t minimumOverlap) {
  for (std::size_t overlap = std::min(hint.size(), fragment.size());
       overlap >= std::max(minimumOverlap, std::size_t{1}); --overlap) {
    const std::size_t offset = hint.size() - overlap;
    if (fragment.starts_with(hint.substr(offset))) return offset;
  }
  return std::nullopt;
}

}  // namespace pravik
