#include "Parsers/IDCardBackParser.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "Parsers/CardText.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

using LineTexts = std::span<const std::string>;
using Validity = IDCardBackParser::Validity;

constexpr std::string_view authorityLabel = "签发机关";
constexpr std::string_view shortAuthorityLabel = "签发";
/// What is taken out of a line to leave the office; the first of them marks the line.
constexpr std::array<std::string_view, 1> authorityLabelParts{authorityLabel};
constexpr std::array<std::string_view, 2> shortAuthorityLabelParts{shortAuthorityLabel, "机关"};
constexpr std::array<std::string_view, 5> policeOfficeKeywords{"公安局", "派出所", "公安分局", "公安处", "公安厅"};
/// Dropped before an office's name.
constexpr std::u32string_view leadingPunctuation = U"，。、；：！？·—…,.;:!?- \u3000\"'「」（）【】";

/// As they are printed: two dates, or a date and the mark of a card without an end date.
constexpr std::array<std::string_view, 3> validityPatterns{
    R"((\d{8})\s*[-—–]\s*(\d{8}|长期))",
    R"((\d{4}\.\d{2}\.\s*\d{2})\s*[-—–]\s*(\d{4}\.\d{2}\.\s*\d{2}|长期))",
    R"((\d{8})\s+(\d{8}|长期))",
};
constexpr std::string_view validityLabel = "有效期";
constexpr std::string_view longTermMark = "长期";
constexpr std::string_view datePattern = R"(\d{8})";
constexpr std::size_t dateLength = 8;

/// What may stand inside a date that was read in pieces: spaces, line ends, and what a printed dot is read as.
constexpr std::string_view insideDatePattern = R"([\s./．。·,，]+)";
/// Digits that may hold dates. Whatever stands between two of them separates the dates, be it "-", "至", "~" or "－".
constexpr std::string_view digitRunPattern = R"(\d{8,})";

std::string authorityBesideLabel(LineTexts lineTexts, std::span<const std::string_view> labelParts);
std::string authorityByKeyword(LineTexts lineTexts);
Validity validityByPattern(std::string_view fullText);
Validity validityByDates(std::string_view fullText);
Validity validityByLines(LineTexts lineTexts);

}  // namespace

std::optional<IDCardBackInfo> IDCardBackParser::parse(const Observations& observations) const {
  const CardText card = cardText(observations);
  OCRLogger::dumpObservations(observations, "ID Card Back OCR");

  const std::string authority = extractIssuingAuthority(card.lineTexts);
  const Validity validity = extractValidity(card.fullText, card.lineTexts);
  OCRLogger::debug([&] { return "解析结果: 签发机关='" + authority + "', 有效期='" + validity.period + "'"; });
  if (authority.empty() && validity.period.empty()) {
    OCRLogger::warning([] { return "签发机关和有效期均提取失败"; });
    return std::nullopt;
  }
  OCRLogger::info([] { return "身份证背面解析成功"; });
  return IDCardBackInfo{.issuingAuthority = authority,
                        .validityPeriod = validity.period,
                        .startDate = validity.start,
                        .endDate = validity.end,
                        .isLongTerm = validity.isLongTerm};
}

std::string IDCardBackParser::extractIssuingAuthority(LineTexts lineTexts) {
  if (auto authority = authorityBesideLabel(lineTexts, authorityLabelParts); !authority.empty()) return authority;
  if (auto authority = authorityBesideLabel(lineTexts, shortAuthorityLabelParts); !authority.empty()) return authority;
  return authorityByKeyword(lineTexts);
}

IDCardBackParser::Validity IDCardBackParser::extractValidity(std::string_view fullText, LineTexts lineTexts) {
  if (auto validity = validityByPattern(fullText); !validity.period.empty()) return validity;
  if (auto validity = validityByDates(fullText); !validity.period.empty()) return validity;
  return validityByLines(lineTexts);
}

namespace {

std::string cleaned(std::string_view text) {
  return std::string(trimmedStart(trimmed(text), leadingPunctuation));
}

/// The rest of the first line that carries the label, or the line below when there is no rest.
std::string authorityBesideLabel(LineTexts lineTexts, std::span<const std::string_view> labelParts) {
  for (std::size_t i = 0; i < lineTexts.size(); ++i) {
    if (!contains(lineTexts[i], labelParts.front())) continue;
    std::string rest = lineTexts[i];
    for (const std::string_view part : labelParts) rest = removingAll(rest, part);
    if (!trimmed(rest).empty()) return cleaned(rest);
    if (i + 1 < lineTexts.size()) return cleaned(lineTexts[i + 1]);
  }
  return {};
}

std::string_view textAfter(std::string_view text, std::string_view label) {
  const auto found = text.find(label);
  return found == std::string_view::npos ? text : text.substr(found + label.size());
}

std::string authorityByKeyword(LineTexts lineTexts) {
  for (const std::string_view line : lineTexts) {
    if (!containsAny(line, policeOfficeKeywords)) continue;
    const std::string_view rest = trimmed(textAfter(textAfter(line, authorityLabel), shortAuthorityLabel));
    if (!rest.empty()) return cleaned(rest);
  }
  return {};
}

Validity validityOf(const std::vector<std::string>& dates, bool longTerm) {
  if (dates.size() >= 2)
    return {.period = dates[0] + "-" + dates[1], .start = dates[0], .end = dates[1], .isLongTerm = false};
  if (dates.size() == 1 && longTerm)
    return {.period = dates[0] + "-长期", .start = dates[0], .end = {}, .isLongTerm = true};
  return {};
}

Validity validityByPattern(std::string_view fullText) {
  for (const std::string_view pattern : validityPatterns) {
    const auto match = RegexHelper::firstMatch(pattern, fullText);
    if (!match) continue;
    if (auto validity = IDCardBackParser::parseValidityString(*match); !validity.period.empty()) return validity;
  }
  return {};
}

/// The text without the marks that may separate the parts of a date.
std::string withoutDateMarks(std::string_view text) {
  return removingAll(removingAll(text, "."), "/");
}

Validity validityByDates(std::string_view fullText) {
  const std::string text = withAsciiDigits(withoutDateMarks(fullText));
  std::vector<std::string> dates = RegexHelper::allMatches(datePattern, text);
  std::erase_if(dates, [](const std::string& date) { return !IDCardBackParser::isValidDate(date); });
  return validityOf(dates, contains(fullText, longTermMark));
}

/// The dates that the runs of digits are made of: a run is one date or two, or it holds none.
std::vector<std::string> datesIn(std::span<const std::string> runs) {
  std::vector<std::string> dates;
  for (const std::string& run : runs) {
    if (run.size() != dateLength && run.size() != 2 * dateLength) continue;
    for (std::size_t start = 0; start < run.size(); start += dateLength)
      if (std::string date = run.substr(start, dateLength); IDCardBackParser::isValidDate(date))
        dates.push_back(std::move(date));
  }
  return dates;
}

/// Puts together dates that were read in pieces, from the line with the label on or, without one, from the top. As
/// pieces may belong to anything, the end must come after the start.
Validity validityByLines(LineTexts lineTexts) {
  const auto labelled =
      std::ranges::find_if(lineTexts, [](std::string_view line) { return contains(line, validityLabel); });
  const auto first = labelled == lineTexts.end() ? lineTexts.begin() : labelled;
  const std::string text = joined(LineTexts(first, lineTexts.end()), "\n");
  const std::string digits = withAsciiDigits(RegexHelper::replace(insideDatePattern, text, ""));

  const Validity validity =
      validityOf(datesIn(RegexHelper::allMatches(digitRunPattern, digits)), contains(text, longTermMark));
  return validity.start && validity.end && *validity.end <= *validity.start ? Validity{} : validity;
}

}  // namespace

IDCardBackParser::Validity IDCardBackParser::parseValidityString(std::string_view text) {
  const std::string digits = withAsciiDigits(removingAll(withoutDateMarks(text), " "));
  const std::vector<std::string> dates = RegexHelper::allMatches(datePattern, digits);
  const bool longTerm = contains(text, longTermMark);
  if (dates.empty() && longTerm)
    return {.period = std::string(longTermMark), .start = {}, .end = {}, .isLongTerm = true};
  return validityOf(dates, longTerm);
}

bool IDCardBackParser::isValidDate(std::string_view text) {
  if (text.size() != dateLength || !std::ranges::all_of(text, isAsciiDigit)) return false;
  const auto number = [&](std::size_t offset, std::size_t count) {
    return std::stoi(std::string(text.substr(offset, count)));
  };
  const int year = number(0, 4);
  const int month = number(4, 2);
  const int day = number(6, 2);
  return 1900 <= year && year <= 2100 && 1 <= month && month <= 12 && 1 <= day && day <= 31;
}

}  // namespace pravik
