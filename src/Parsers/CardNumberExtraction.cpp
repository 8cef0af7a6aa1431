#include "Parsers/CardNumberExtraction.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardText.h"
#include "Parsers/LuhnRepair.h"
#include "Parsers/OCRDigits.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

/// How far a candidate is from what was read; lower is better.
namespace priority {
constexpr int wholeBlock = 0;
constexpr int correctedBlock = 1;
constexpr int completedByHint = 1;
constexpr int withinBlock = 2;
constexpr int row = 3;
constexpr int correctedRow = 4;
constexpr int withinLine = 5;
constexpr int completedLastGroup = 5;
constexpr int correctedLine = 6;
}  // namespace priority

constexpr std::string_view digitGroupPattern = R"(\d+)";
constexpr std::size_t shortestNumber = 16;
constexpr std::size_t longestNumber = 19;

/// What completion by a hint may start from: a number that lacks one to three of its first digits.
constexpr std::size_t shortestIncomplete = 13;
constexpr std::size_t longestIncomplete = 18;
/// One overlapping digit agrees by chance once in ten times.
constexpr std::size_t shortestOverlap = 2;
constexpr std::size_t longestOverlap = 3;

constexpr std::size_t groupLength = 4;
constexpr std::size_t groupsOfANumber = 4;
/// A last group of three digits is narrower than the others; one as wide as this share of them has lost a digit in
/// its middle.
constexpr double fullGroupWidth = 0.9;

struct Candidate {
  std::string digits;
  std::string digitsAsRead;
  int priority;
  bool passesLuhn;
};

/// The candidates in the order of discovery.
class Candidates {
 public:
  const std::vector<Candidate>& list() const { return list_; }

  /// Takes what was read, when it can be a card number.
  void addRead(const std::string& digits, int priority, std::string_view logText) {
    if (isValidCardNumber(digits)) add(digits, digits, priority, logText);
  }

  void add(const std::string& digits, const std::string& digitsAsRead, int priority, std::string_view logText) {
    OCRLogger::debug([&] { return formatted("{}{}", logText, digits); });
    list_.push_back({digits, digitsAsRead, priority, luhnCheck(digits)});
  }

  bool anyPassesLuhn() const { return std::ranges::any_of(list_, &Candidate::passesLuhn); }

  template <class Drop>
  std::size_t drop(Drop shouldDrop) {
    return std::erase_if(list_, shouldDrop);
  }

 private:
  std::vector<Candidate> list_;
};

void addWholeBlocks(const Observations& observations, Candidates& candidates);
void addCorrectedBlocks(const Observations& observations, Candidates& candidates);
void addWithinBlocks(const Observations& observations, Candidates& candidates);
void addRows(std::span<const Observations> rows, Candidates& candidates);
void addWithinLines(std::span<const std::string> lines, Candidates& candidates);
void addCorrectedLines(std::span<const std::string> lines, Candidates& candidates);
void addCompletedByHint(std::span<const Observations> rows, std::span<const std::string> hints, Candidates& candidates);
void addCompletedLastGroups(std::span<const Observations> rows, Candidates& candidates);
void crossCheckWithHints(std::span<const std::string> hints, Candidates& candidates);
void addReplacedByHint(std::span<const std::string> hints, Candidates& candidates);
std::vector<Candidate> ranked(std::vector<Candidate> candidates);
std::optional<ExtractedCardNumber> repaired(std::span<const Candidate> candidates, std::span<const std::string> hints);
std::vector<std::string> linesOf(const Observations& observations);

}  // namespace

std::optional<ExtractedCardNumber> extractCardNumber(const Observations& observations) {
  const std::vector<Observations> rows = bankCardRows(observations);
  const std::vector<std::string> lines = linesOf(observations);

  Candidates candidates;
  addWholeBlocks(observations, candidates);
  addCorrectedBlocks(observations, candidates);
  addWithinBlocks(observations, candidates);
  addRows(rows, candidates);
  addWithinLines(lines, candidates);
  addCorrectedLines(lines, candidates);

  const std::vector<std::string> printedHints = extractBINHints(rows);
  if (!printedHints.empty())
    OCRLogger::debug([&] { return formatted("检测到 BIN 提示数字: {}", joined(printedHints, ", ")); });
  const std::vector<std::string> hints = plausibleBINHints(printedHints);
  addCompletedByHint(rows, hints, candidates);
  addCompletedLastGroups(rows, candidates);
  crossCheckWithHints(hints, candidates);
  addReplacedByHint(hints, candidates);
  if (candidates.list().empty()) return std::nullopt;

  const std::vector<Candidate> best = ranked(candidates.list());
  if (!best.front().passesLuhn)
    if (auto number = repaired(best, hints)) return number;
  return ExtractedCardNumber{best.front().digits, best.front().digitsAsRead};
}

namespace {

std::vector<std::string> linesOf(const Observations& observations) {
  std::vector<std::string> lines;
  for (const auto& block : observations)
    for (const std::string_view line : splitAtLineFeeds(block.text)) lines.emplace_back(line);
  return lines;
}

void addWholeBlocks(const Observations& observations, Candidates& candidates) {
  for (const auto& block : observations) {
    const std::string text = removingAll(removingAll(block.text, " "), "-");
    const std::string digits = asciiDigits(text);
    if (withAsciiDigits(text) == digits)
      candidates.addRead(digits, priority::wholeBlock, "策略1a(单块纯数字) 候选卡号: ");
  }
}

void addCorrectedBlocks(const Observations& observations, Candidates& candidates) {
  for (const auto& block : observations)
    for (const auto& [digits, label] : ocrCorrectedVariants(block.text))
      candidates.addRead(digits, priority::correctedBlock, formatted("策略1b(单块纠错{}) 候选卡号: ", label));
}

/// Groups of digits that follow each other with one separator between two.
using DigitRun = std::vector<std::string>;

std::vector<DigitRun> digitRuns(std::string_view text) {
  std::vector<DigitRun> runs;
  std::size_t end = 0;
  for (const std::string& group : RegexHelper::allMatches(digitGroupPattern, text)) {
    const std::size_t start = text.find(group, end);
    const std::string_view between = text.substr(end, start - end);
    const bool continues = !runs.empty() && (between == " " || between == "-");
    if (!continues) runs.emplace_back();
    runs.back().push_back(asciiDigits(group));
    end = start + group.size();
  }
  return runs;
}

/// The pieces of a run with more digits than a card number has that may be one: they begin and end where a group does,
/// and the check digit tells them from the digits beside them.
std::vector<std::string> numbersAmid(const DigitRun& run) {
  std::vector<std::string> numbers;
  for (std::size_t first = 0; first < run.size(); ++first) {
    std::string digits;
    for (std::size_t next = first; next < run.size() && digits.size() + run[next].size() <= longestNumber; ++next) {
      digits += run[next];
      if (isValidCardNumber(digits) && luhnCheck(digits)) numbers.push_back(digits);
    }
  }
  return numbers;
}

/// The numbers amid a text.
std::vector<std::string> numbersWithin(std::string_view text) {
  std::vector<std::string> numbers;
  for (const DigitRun& run : digitRuns(text)) {
    const std::string digits = joined(run, "");
    if (digits.size() > longestNumber)
      std::ranges::copy(numbersAmid(run), std::back_inserter(numbers));
    else if (digits.size() >= shortestNumber)
      numbers.push_back(digits);
  }
  return numbers;
}

void addWithinBlocks(const Observations& observations, Candidates& candidates) {
  for (const auto& block : observations)
    for (const std::string& number : numbersWithin(block.text))
      candidates.addRead(number, priority::withinBlock, "策略1c(单块正则) 候选卡号: ");
}

std::string rowText(const Observations& row) {
  std::string text;
  for (const auto& block : row) text += block.text;
  return text;
}

void addRows(std::span<const Observations> rows, Candidates& candidates) {
  for (const Observations& row : rows) {
    const std::string text = rowText(row);
    const std::string whole = asciiDigits(text);
    candidates.addRead(whole, priority::row, "策略2(位置拼接) 候选卡号: ");
    if (whole.size() > longestNumber)
      for (const std::string& number : numbersWithin(lineText(row)))
        candidates.addRead(number, priority::row, "策略2(位置拼接) 候选卡号: ");
    for (const auto& [digits, label] : ocrCorrectedVariants(text))
      candidates.addRead(digits, priority::correctedRow,
                         label.empty() ? "策略2(位置拼接+纠错) 候选卡号: " : "策略2(位置拼接+纠错B6) 候选卡号: ");
  }
}

void addWithinLines(std::span<const std::string> lines, Candidates& candidates) {
  for (std::size_t i = 0; i < lines.size(); ++i)
    for (const std::string& number : numbersWithin(lines[i]))
      candidates.addRead(number, priority::withinLine, formatted("策略3(行正则) 行{}: ", i + 1));
}

void addCorrectedLines(std::span<const std::string> lines, Candidates& candidates) {
  for (const std::string& line : lines)
    for (const auto& [digits, label] : ocrCorrectedVariants(line))
      candidates.addRead(digits, priority::correctedLine, formatted("策略4(行纠错{}) 候选卡号: ", label));
}

/// What may be a card number without its beginning: the rows' digits, as read and corrected, each once.
std::vector<std::string> incompleteNumbers(std::span<const Observations> rows) {
  std::vector<std::string> numbers;
  std::set<std::string> seen;
  const auto take = [&](const std::string& digits) {
    if (digits.size() < shortestIncomplete || digits.size() > longestIncomplete) return;
    if (seen.insert(digits).second) numbers.push_back(digits);
  };
  for (const Observations& row : rows) {
    const std::string text = rowText(row);
    take(asciiDigits(text));
    for (const OCRDigitVariant& variant : ocrCorrectedVariants(text)) take(variant.digits);
  }
  return numbers;
}

/// The hint's digits that a number lacks at its beginning; absent when the hint does not overlap it, or all of the
/// hint is there. The longest overlap decides, whether or not the result is a valid number.
std::optional<std::string_view> missingBeginning(std::string_view number, std::string_view hint) {
  if (number.starts_with(hint)) return std::nullopt;
  const std::string_view tail = hint.substr(hint.size() - std::min(hint.size(), longestOverlap));
  const auto offset = binSuffixOffset(number, tail, shortestOverlap);
  if (!offset) return std::nullopt;
  return hint.substr(0, hint.size() - tail.size() + *offset);
}

/// A completed number never competes with a read one that passes the Luhn check, and counts only when it passes
/// itself.
void addCompletedByHint(std::span<const Observations> rows, std::span<const std::string> hints,
                        Candidates& candidates) {
  if (hints.empty() || candidates.anyPassesLuhn()) return;
  for (const std::string& number : incompleteNumbers(rows)) {
    for (const std::string& hint : hints) {
      const auto beginning = missingBeginning(number, hint);
      if (!beginning) continue;
      const std::string completed = std::string(*beginning) + number;
      if (!isValidCardNumber(completed) || !luhnCheck(completed)) continue;
      candidates.add(completed, number, priority::completedByHint, formatted("BIN补全: 补充前缀 '{}' → ", *beginning));
    }
  }
}

/// A group of digits in a row; the width of its block when the block holds nothing else.
struct DigitGroup {
  std::string digits;
  std::optional<double> width;
};

/// The groups of a row that holds nothing but groups of digits; empty for any other row.
std::vector<DigitGroup> digitGroups(const Observations& row) {
  std::vector<DigitGroup> groups;
  for (const auto& block : row) {
    const std::vector<std::string_view> pieces = splitAtWhitespace(block.text);
    for (const std::string_view piece : pieces) {
      std::string digits = asciiDigits(piece);
      if (digits.empty() || withAsciiDigits(piece) != digits) return {};
      groups.push_back({std::move(digits), pieces.size() == 1 ? std::optional(block.boundingBox.width) : std::nullopt});
    }
  }
  return groups;
}

/// Whether these are groups of four of which only the last has three digits, and is as narrow as three digits are.
bool lacksItsLastDigit(std::span<const DigitGroup> groups) {
  if (groups.size() != groupsOfANumber) return false;
  const auto whole = groups.first(groupsOfANumber - 1);
  const DigitGroup& last = groups.back();
  if (last.digits.size() != groupLength - 1) return false;
  if (!std::ranges::all_of(whole, [](const DigitGroup& group) { return group.digits.size() == groupLength; }))
    return false;
  const auto& neighbour = whole.back();
  return !last.width || !neighbour.width || *last.width < fullGroupWidth * *neighbour.width;
}

/// Completes a row of groups of four with the one last digit that makes it pass the Luhn check. Like a completion by
/// a hint it never competes with a number that was read and passes.
void addCompletedLastGroups(std::span<const Observations> rows, Candidates& candidates) {
  if (candidates.anyPassesLuhn()) return;
  for (const Observations& row : rows) {
    const std::vector<DigitGroup> groups = digitGroups(row);
    if (!lacksItsLastDigit(groups)) continue;
    std::string asRead;
    for (const DigitGroup& group : groups) asRead += group.digits;
    for (const char last : std::string_view("0123456789")) {
      const std::string completed = asRead + last;
      if (!isValidCardNumber(completed) || !luhnCheck(completed)) continue;
      candidates.add(completed, asRead, priority::completedLastGroup,
                     formatted("策略6(短组末位补全,位置{}) 候选卡号: ", asRead.size()));
    }
  }
}

bool beginsWithAny(std::string_view digits, std::span<const std::string> hints) {
  return std::ranges::any_of(hints, [&](const std::string& hint) { return digits.starts_with(hint); });
}

/// Drops the candidates that begin with none of the hints. A hint counts only when a candidate begins with it, so
/// that a hotline drops nothing, and a candidate that passes the Luhn check stays whatever the hints say.
void crossCheckWithHints(std::span<const std::string> hints, Candidates& candidates) {
  std::vector<std::string> confirmed;
  std::ranges::copy_if(hints, std::back_inserter(confirmed), [&](const std::string& hint) {
    return std::ranges::any_of(candidates.list(), [&](const Candidate& c) { return c.digits.starts_with(hint); });
  });
  if (confirmed.empty()) return;
  const std::size_t dropped =
      candidates.drop([&](const Candidate& c) { return !c.passesLuhn && !beginsWithAny(c.digits, confirmed); });
  OCRLogger::debug([&] {
    return formatted("BIN交叉验证: 前缀 {} 匹配 {} 个候选，排除 {} 个", joined(confirmed, "/"),
                     candidates.list().size(), dropped);
  });
}

/// Whether a number's beginning may be a misreading of the hint: at least half of the digits are the same.
bool resembles(std::string_view number, std::string_view hint) {
  std::size_t same = 0;
  for (std::size_t i = 0; i < hint.size(); ++i) same += number[i] == hint[i] ? 1 : 0;
  return same < hint.size() && same * 2 >= hint.size();
}

/// Puts a hint's digits in place of a candidate's first ones. The result must pass the Luhn check where nothing that
/// was read does.
void addReplacedByHint(std::span<const std::string> hints, Candidates& candidates) {
  if (candidates.anyPassesLuhn()) return;
  const std::vector<Candidate> read = candidates.list();
  for (const Candidate& candidate : read) {
    for (const std::string& hint : hints) {
      if (!resembles(candidate.digits, hint)) continue;
      const std::string replaced = hint + candidate.digits.substr(hint.size());
      if (!isValidCardNumber(replaced) || !luhnCheck(replaced)) continue;
      candidates.add(replaced, candidate.digitsAsRead, candidate.priority - 1, "BIN前缀替换: ");
    }
  }
}

/// 16 digits are the most frequent, then 19; both other lengths are rare.
int lengthRank(std::size_t length) {
  if (length == 16) return 0;
  return length == 19 ? 1 : 2;
}

std::vector<Candidate> ranked(std::vector<Candidate> candidates) {
  std::ranges::stable_sort(candidates, {}, [](const Candidate& c) {
    return std::tuple(!c.passesLuhn, c.priority, lengthRank(c.digits.size()));
  });
  OCRLogger::debug([&] {
    std::vector<std::string> texts;
    texts.reserve(candidates.size());
    for (const Candidate& c : candidates) texts.push_back(formatted("{} luhn={}", c.digits, c.passesLuhn));
    return "候选排序结果: " + joined(texts, ", ");
  });
  return candidates;
}

/// The hint whose digits a repair must leave alone: the first that the number begins with, or else the first.
std::string_view protectedPrefix(std::string_view digits, std::span<const std::string> hints) {
  const auto match = std::ranges::find_if(hints, [&](const std::string& hint) { return digits.starts_with(hint); });
  if (match != hints.end()) return *match;
  return hints.empty() ? std::string_view() : std::string_view(hints.front());
}

std::optional<ExtractedCardNumber> repaired(std::span<const Candidate> candidates, std::span<const std::string> hints) {
  using Fix = std::optional<std::string> (*)(std::string_view, std::string_view);
  constexpr std::array<std::pair<Fix, std::string_view>, 2> fixes{{
      {luhnSingleDigitFix, "Luhn单位修正(候选): "},
      {luhnDigitRemovalFix, "Luhn删位修正(候选): "},
  }};
  for (const auto& [fix, logText] : fixes) {
    // Most numbers are found in several ways, and a repair that was refused once is refused again.
    std::set<std::string_view> tried;
    for (const Candidate& candidate : candidates) {
      if (!tried.insert(candidate.digits).second) continue;
      auto number = fix(candidate.digits, protectedPrefix(candidate.digits, hints));
      if (!number) continue;
      OCRLogger::debug([&] { return formatted("{}{}", logText, *number); });
      return ExtractedCardNumber{*std::move(number), candidate.digitsAsRead};
    }
  }
  return std::nullopt;
}

}  // namespace

}  // namespace pravik
