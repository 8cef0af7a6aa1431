#include "Parsers/IDCardFrontParser.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Parsers/CardText.h"
#include "Parsers/CitizenNumber.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

using Lines = std::span<const Observations>;
using LineTexts = std::span<const std::string>;
using IDNumber = std::optional<std::string>;

/// The label of the address and what it is often misread as, in the order in which they are looked for.
constexpr std::array<std::string_view, 10> addressLabelVariants{"住址",  "住 址", "住所",  "住 所", "佳址",
                                                                "佳 址", "住扯",  "住 扯", "往址",  "往 址"};
/// What follows the address on the card; the first one that occurs cuts it off.
constexpr std::array<std::string_view, 4> addressStopWords{"公民身份号码", "公民身份", "公民", "身份号码"};
/// A line with one of these no longer belongs to the address.
constexpr std::array<std::string_view, 3> numberLabels{"公民", "身份号码", "身份号"};

constexpr std::array<std::string_view, 2> nameLabelPatterns{R"(姓[、，,\s]*名[、，,\s：:]*)", "姓名"};
constexpr std::string_view namePattern = R"(^[\u4e00-\u9fa5·•.]{2,8}\z)";
constexpr std::u32string_view nameTrimCharacters = U"、，。,.：:·• ";
/// A line with one of these is not the name below its label.
constexpr std::array<std::string_view, 4> otherFieldLabels{"性别", "民族", "出生", "住址"};
/// A block with one of these is not the name.
constexpr std::array<std::string_view, 10> nameExclusionWords{
    "中华人民共和国", "居民身份证", "姓名", "性别", "民族", "出生", "住址", "公民身份号码", "公民身份", "身份号码"};

constexpr std::string_view spacedDigitRunPattern = R"(\d[\d ]{16,}\d)";
constexpr std::string_view birthDatePattern = R"((\d{4})年\s*(\d{1,2})月\s*(\d{1,2})日)";
constexpr std::string_view birthLinePattern = R"(\d{4}年)";
constexpr std::string_view labelledGenderPattern = R"(性别\s*(男|女))";
// Only the one ideograph U+4E00 is kept away from a lone mark; other characters beside it are ordinary.
constexpr std::string_view loneMalePattern = R"((?<!\u4e00)男(?!\u4e00))";
constexpr std::string_view loneFemalePattern = R"((?<!\u4e00)女(?!\u4e00))";
constexpr std::string_view labelledEthnicityPattern = R"(民族\s*([\u4e00-\u9fa5]{1,6}))";
/// Looked for when the label is not there; the first one found wins.
constexpr std::array<std::string_view, 24> ethnicGroups{"汉",   "蒙古", "回",   "藏", "维吾尔", "苗",   "彝",   "壮",
                                                        "布依", "朝鲜", "满",   "侗", "瑶",     "白",   "土家", "哈尼",
                                                        "傣",   "黎",   "傈僳", "佤", "畲",     "高山", "拉祜", "水"};

/// Where the birth date stands in a citizen number, and the characters that a number must have to hold it.
constexpr std::size_t birthDateOffset = 6;
constexpr std::size_t birthDateEnd = 14;
constexpr std::size_t citizenNumberLength = 18;

/// The band of the address when the lines around it are not found, and its distance from those lines:
/// fractions of the picture's height from the top.
constexpr double defaultAddressTop = 0.3;
constexpr double defaultAddressBottom = 0.88;
constexpr double addressMargin = 0.02;

struct BirthDate {
  std::string full;
  std::string year;
  std::string month;
  std::string day;
};

IDNumber extractIDNumber(const std::string& text);
BirthDate extractBirthDate(const std::string& text, const IDNumber& idNumber);
std::string extractName(Lines lines, LineTexts lineTexts);
std::string extractGender(const std::string& text);
std::string extractEthnicity(const std::string& text);
std::string extractAddress(const CardText& card, const IDNumber& idNumber);

}  // namespace

std::optional<IDCardFrontInfo> IDCardFrontParser::parse(const Observations& observations) const {
  const CardText card = cardText(observations);
  OCRLogger::dumpObservations(observations, "ID Card Front OCR");

  const IDNumber idNumber = extractIDNumber(card.fullText);
  if (!idNumber) OCRLogger::warning([&] { return "未提取到身份证号，全文:\n" + card.fullText; });

  BirthDate birth = extractBirthDate(card.fullText, idNumber);
  IDCardFrontInfo info{.name = extractName(card.lines, card.lineTexts),
                       .gender = extractGender(card.fullText),
                       .ethnicity = extractEthnicity(card.fullText),
                       .birthDate = std::move(birth.full),
                       .birthYear = std::move(birth.year),
                       .birthMonth = std::move(birth.month),
                       .birthDay = std::move(birth.day),
                       .address = extractAddress(card, idNumber),
                       .idNumber = idNumber.value_or("")};
  OCRLogger::debug([&] {
    return "解析结果: 姓名='" + info.name + "', 性别='" + info.gender + "', 民族='" + info.ethnicity + "', 住址='" +
           info.address + "'";
  });
  if (!idNumber) {
    OCRLogger::error([] { return "身份证号提取失败，放弃解析"; });
    return std::nullopt;
  }
  OCRLogger::info([&] { return "身份证正面解析成功: " + info.idNumber; });
  return info;
}

namespace {

IDNumber firstCitizenNumber(std::string_view text) {
  const auto match = RegexHelper::firstMatch(citizenNumberPattern, text);
  if (!match) return std::nullopt;
  return withAsciiDigits(*match);
}

IDNumber extractIDNumber(const std::string& text) {
  if (auto number = firstCitizenNumber(text)) return number;

  const std::string compact = removingAll(text, " ");
  if (auto number = firstCitizenNumber(compact)) return number;

  // The final X misread as a multiplication sign or read in lower case.
  const std::string capital = replacingAll(replacingAll(compact, "×", "X"), "x", "X");
  if (auto number = firstCitizenNumber(capital)) return number;

  // A number in the digits of another script, full-width ones for instance.
  for (const std::string& run : RegexHelper::allMatches(spacedDigitRunPattern, text)) {
    std::string digits = asciiDigits(run);
    if (digits.size() == citizenNumberLength && RegexHelper::matches(citizenNumberPattern, digits)) return digits;
  }
  return std::nullopt;
}

std::string twoDigits(const std::string& digits) {
  return digits.size() == 1 ? "0" + digits : digits;
}

BirthDate birthDate(const std::string& year, const std::string& month, const std::string& day) {
  return {.full = year + "年" + month + "月" + day + "日", .year = year, .month = month, .day = day};
}

BirthDate extractBirthDate(const std::string& text, const IDNumber& idNumber) {
  const std::vector<std::string> printed = RegexHelper::allCaptureGroups(birthDatePattern, text);
  if (printed.size() == 3) {
    return birthDate(withAsciiDigits(printed[0]), twoDigits(withAsciiDigits(printed[1])),
                     twoDigits(withAsciiDigits(printed[2])));
  }
  if (idNumber && idNumber->size() >= birthDateEnd) {
    return birthDate(idNumber->substr(birthDateOffset, 4), idNumber->substr(birthDateOffset + 4, 2),
                     idNumber->substr(birthDateOffset + 6, 2));
  }
  return {};
}

bool isName(std::string_view candidate) {
  return RegexHelper::matches(namePattern, candidate);
}

std::string_view firstPiece(std::string_view text) {
  const std::vector<std::string_view> pieces = splitAtWhitespace(text);
  return pieces.empty() ? text : pieces.front();
}

std::string nameOnLabelledLine(LineTexts lineTexts) {
  for (const std::string_view line : lineTexts) {
    for (const std::string_view pattern : nameLabelPatterns) {
      const auto label = RegexHelper::firstMatch(pattern, line);
      if (!label) continue;
      const std::string_view rest = line.substr(line.find(*label) + label->size());
      const std::string_view candidate = firstPiece(trimmed(trimmed(rest), nameTrimCharacters));
      if (isName(candidate)) return std::string(candidate);
    }
  }
  return {};
}

std::string nameBelowLabel(LineTexts lineTexts) {
  for (std::size_t i = 0; i + 1 < lineTexts.size(); ++i) {
    if (!contains(lineTexts[i], "姓名")) continue;
    const std::string_view below = trimmed(lineTexts[i + 1]);
    if (containsAny(below, otherFieldLabels)) continue;
    const std::string_view candidate = firstPiece(below);
    if (isName(candidate)) return std::string(candidate);
  }
  return {};
}

/// The topmost block that looks like a name.
std::string nameFromTop(Lines lines) {
  std::vector<const Observation*> blocks;
  for (const Observations& line : lines) {
    for (const auto& block : line) blocks.push_back(&block);
  }
  std::ranges::stable_sort(
      blocks, [](const auto* a, const auto* b) { return std::weak_order(topOriginMidY(*a), topOriginMidY(*b)) < 0; });
  for (const auto* block : blocks) {
    const std::string_view candidate = trimmed(block->text);
    if (!containsAny(candidate, nameExclusionWords) && isName(candidate)) return std::string(candidate);
  }
  return {};
}

std::string extractName(Lines lines, LineTexts lineTexts) {
  if (auto name = nameOnLabelledLine(lineTexts); !name.empty()) return name;
  if (auto name = nameBelowLabel(lineTexts); !name.empty()) return name;
  return nameFromTop(lines);
}

std::string extractGender(const std::string& text) {
  if (auto gender = RegexHelper::captureGroup(1, labelledGenderPattern, text)) return *gender;
  const bool labelled = contains(text, "性别");
  if (labelled ? contains(text, "男") : RegexHelper::matches(loneMalePattern, text)) return "男";
  if (labelled ? contains(text, "女") : RegexHelper::matches(loneFemalePattern, text)) return "女";
  return {};
}

std::string extractEthnicity(const std::string& text) {
  if (auto ethnicity = RegexHelper::captureGroup(1, labelledEthnicityPattern, text)) return *ethnicity;
  const auto* group = std::ranges::find_if(ethnicGroups, [&](std::string_view name) { return contains(text, name); });
  return group == ethnicGroups.end() ? std::string() : std::string(*group);
}

bool holdsCitizenNumber(std::string_view line) {
  return RegexHelper::matches(citizenNumberPattern, removingAll(line, " "));
}

std::string_view textAfterAddressLabel(std::string_view line) {
  for (const std::string_view label : addressLabelVariants) {
    const auto found = line.find(label);
    if (found == std::string_view::npos) continue;
    const std::string_view rest = trimmed(line.substr(found + label.size()));
    if (!rest.empty()) return rest;
  }
  return {};
}

std::string extractAddressByLabel(LineTexts lineTexts, const IDNumber& idNumber) {
  const auto labelled =
      std::ranges::find_if(lineTexts, [](std::string_view line) { return containsAny(line, addressLabelVariants); });
  if (labelled == lineTexts.end()) return {};
  std::string address(textAfterAddressLabel(*labelled));
  for (auto line = labelled + 1; line != lineTexts.end(); ++line) {
    if (containsAny(*line, numberLabels) || (idNumber && contains(*line, *idNumber)) || holdsCitizenNumber(*line))
      break;
    address += trimmed(*line);
  }
  return std::string(trimmed(address));
}

std::string_view textBefore(std::string_view text, std::string_view stop) {
  return text.substr(0, text.find(stop));
}

std::string extractAddressFromFullText(std::string_view text, const IDNumber& idNumber) {
  const auto* label =
      std::ranges::find_if(addressLabelVariants, [&](std::string_view variant) { return contains(text, variant); });
  if (label == addressLabelVariants.end()) return {};
  std::string_view rest = text.substr(text.find(*label) + label->size());
  const auto* stop =
      std::ranges::find_if(addressStopWords, [&](std::string_view word) { return contains(rest, word); });
  if (stop != addressStopWords.end()) rest = textBefore(rest, *stop);
  if (idNumber) rest = textBefore(rest, *idNumber);
  return std::string(trimmed(removingAll(rest, "\n")));
}

/// The mean of the vertical centres of a line's blocks.
double lineMidY(const Observations& line) {
  double sum = 0;
  for (const auto& block : line) sum += topOriginMidY(block);
  return sum / static_cast<double>(line.size());
}

/// Without a label at the start, which may have been put together from two lines.
std::string stripAddressLabelPrefix(std::string_view address) {
  for (const std::string_view label : addressLabelVariants) {
    if (address.starts_with(label)) return std::string(trimmed(address.substr(label.size())));
  }
  return std::string(address);
}

/// What stands between the line of the birth date and the line of the citizen number.
std::string extractAddressByPosition(Lines lines, LineTexts lineTexts) {
  const auto isBirthLine = [](std::string_view line) {
    return contains(line, "出生") || RegexHelper::matches(birthLinePattern, line);
  };
  const auto isNumberLine = [](std::string_view line) { return contains(line, "公民") || holdsCitizenNumber(line); };
  const auto positionOf = [&](auto wanted) -> std::optional<double> {
    const auto found = std::ranges::find_if(lineTexts, wanted);
    if (found == lineTexts.end()) return std::nullopt;
    return lineMidY(lines[static_cast<std::size_t>(found - lineTexts.begin())]);
  };
  const double top = positionOf(isBirthLine).value_or(defaultAddressTop) + addressMargin;
  const auto number = positionOf(isNumberLine);
  const double bottom = number ? *number - addressMargin : defaultAddressBottom;

  std::string address;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const double y = lineMidY(lines[i]);
    if (!(top < y && y < bottom)) continue;
    std::string part(trimmed(lineTexts[i]));
    for (const std::string_view label : addressLabelVariants) part = removingAll(part, label);
    address += trimmed(part);
  }
  return stripAddressLabelPrefix(address);
}

std::string extractAddress(const CardText& card, const IDNumber& idNumber) {
  if (auto address = extractAddressByLabel(card.lineTexts, idNumber); !address.empty()) return address;
  if (auto address = extractAddressFromFullText(card.fullText, idNumber); !address.empty()) return address;
  return extractAddressByPosition(card.lines, card.lineTexts);
}

}  // namespace

}  // namespace pravik
