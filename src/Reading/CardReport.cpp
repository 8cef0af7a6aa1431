#include "Reading/CardReport.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "Platform/Projection.h"
#include "Reading/CardHolder.h"
#include "Reading/FieldSources.h"
#include "Reading/PicturePart.h"
#include "Reading/PictureWarnings.h"
#include "Reading/RecordChecks.h"
#include "Utils/Format.h"
#include "Utils/RegexHelper.h"

namespace pravik {
namespace {

/// What the text of a field always looks like.
struct FieldShape {
  OCRScanMode mode;
  std::string_view field;
  std::string_view pattern;
};
/// The 56 ethnic groups are those of GB/T 3304-1991; the last two alternatives are registered beside them.
constexpr std::array<FieldShape, 10> shapes{{
    // A name ends with no part of the number's label, however the rest of the label was read.
    {OCRScanMode::idCardFront, "name", R"(^(?!.*(号码|身份|居民|公民|[身份]号))\p{Han}[\p{Han}·•]*\p{Han}$)"},
    {OCRScanMode::idCardFront, "gender", "^[男女]$"},
    {OCRScanMode::idCardFront, "ethnicity",
     "^(汉|蒙古|回|藏|维吾尔|苗|彝|壮|布依|朝鲜|满|侗|瑶|白|土家|哈尼|哈萨克|傣|黎|傈僳|佤|畲|高山|拉祜|水|东乡|纳西|"
     "景颇|柯尔克孜|土|达斡尔|仫佬|羌|布朗|撒拉|毛南|仡佬|锡伯|阿昌|普米|塔吉克|怒|乌孜别克|俄罗斯|鄂温克|德昂|保安|"
     "裕固|京|塔塔尔|独龙|鄂伦春|赫哲|门巴|珞巴|基诺|穿青人|革家人)$"},
    {OCRScanMode::idCardFront, "birthDate", R"(^\d{4}年\d{1,2}月\d{1,2}日$)"},
    {OCRScanMode::idCardFront, "address",
     R"(^(?!.*(姓名|性别|出生|住址|公民身份|签发机关|有效期限|居民身份证|中华人民共和国))(?![住址])\p{Han}[^ ]{5,}$)"},
    {OCRScanMode::idCardFront, "idNumber", R"(^\d{17}[\dX]$)"},
    {OCRScanMode::idCardBack, "issuingAuthority", R"(^\p{Han}+公安\p{Han}*[局处厅所]$)"},
    {OCRScanMode::idCardBack, "validityPeriod", R"(^\d{8}-(\d{8}|长期)$)"},
    {OCRScanMode::bankCard, "cardNumber", R"(^\d[\d ]+$)"},
    {OCRScanMode::bankCard, "cardholderName", R"(^(?!.*(V ?A ?L ?I ?D|T ?H ?R ?U|MONTH|YEAR|CARD|BANK))(\D{2,})?$)"},
}};

/// Cards are valid for so many years, or for good (Law of the People's Republic of China on Resident Identity Cards,
/// article 5).
constexpr std::array<int, 3> validYears{5, 10, 20};
/// The day after them on a card that was issued on the 29th of February.
constexpr std::string_view leapDay = "0229", dayBeforeLeapDay = "0228", dayAfterLeapDay = "0301";

/// A field with no block of its own was taken from another one, or is put together.
constexpr double confidenceWithoutBlock = 0.5;
/// Embossed letters are read wrong at every confidence but the highest: of 74 names on drawn cards 42 were reported
/// from 0.8 to 0.99, and 13 of these were wrong; of 31 above none. What is no pinyin besides has to be surer still: a
/// "SHEN" was read as "SKEN" at 0.996.
constexpr std::string_view embossedField = "cardholderName";
constexpr double sureOfEmbossed = 0.99;
constexpr double sureOfForeignName = 0.999;
constexpr double overrated = 0.9;
constexpr std::array<std::string_view, 3> fieldsOfOwnLine{"name", "gender", "ethnicity"};
/// What a check that holds makes of a field at least, and one that fails at most. Luhn raises nothing: it passes one
/// wrong number in ten, and has decided already which reading of a disputed digit is taken.
constexpr double confidenceOfChecked = 0.99;
constexpr double confidenceOfFailed = 0.3;
constexpr double confidenceOfDoubtful = 0.4;
/// A field whose reading was less sure is doubtful.
constexpr double leastConfidence = 0.5;
/// An outline may run just inside the card's edge, by this share.
constexpr double marginOfOutline = 0.03;

std::string textOf(const FieldValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : std::string();
}

bool lastsAsCardsDo(const IDCardBackInfo& info) {
  if (!info.startDate || !info.endDate) return true;
  const std::string_view start = *info.startDate, end = *info.endDate;
  const int years = std::stoi(info.endDate->substr(0, 4)) - std::stoi(info.startDate->substr(0, 4));
  const bool isSameDay =
      start.substr(4) == end.substr(4) ||
      (start.substr(4) == leapDay && (end.substr(4) == dayBeforeLeapDay || end.substr(4) == dayAfterLeapDay));
  return isSameDay && std::ranges::find(validYears, years) != validYears.end();
}

Rect united(const Observations& blocks) {
  Rect all = blocks.front().boundingBox;
  for (const Observation& block : blocks) {
    const Rect& box = block.boundingBox;
    const double x = std::min(all.x, box.x), y = std::min(all.y, box.y);
    all = {x, y, std::max(all.maxX(), box.maxX()) - x, std::max(all.maxY(), box.maxY()) - y};
  }
  return all;
}

/// What the checks say of a field: the worst of them; absent when there is none, or its number is not sound itself.
std::optional<bool> checked(const std::vector<RecordCheck>& checks, std::string_view field) {
  const bool isNumberSound = std::ranges::none_of(
      checks, [](const RecordCheck& check) { return check.kind.isOfNumber && check.passed == false; });
  if (field == "rawCardNumber") return checked(checks, "cardNumber");
  for (const RecordCheck& check : checks)
    if (check.kind.field == field && check.passed)
      return *check.passed ? isNumberSound ? check.passed : std::nullopt : check.passed;
  return std::nullopt;
}

/// How a card lies on the picture that was handed in.
struct Place {
  Projection projection;
  Size card;
  std::optional<Quadrilateral> outline;

  Quadrilateral cornersOn(const Rect& box) const { return projection(cornersOf(inPixels(flipped(box), card))); }
  /// False only where an outline says so.
  bool holds(const Quadrilateral& field) const {
    const Rect box = surrounding(field);
    return !outline || contains(grown(*outline, marginOfOutline), {box.midX(), box.midY()});
  }
};

/// What the engine says, lowered where it overrates itself.
double confidenceIn(const Observations& sources, std::string_view field) {
  const double confidence = std::ranges::min_element(sources, {}, &Observation::confidence)->confidence;
  return field == embossedField && confidence < sureOfEmbossed ? overrated * confidence : confidence;
}

/// Whether an embossed name that is no pinyin may be misread: few holders of Chinese cards have a name of another kind.
bool isUncertainName(const FieldReport& field) {
  return field.name == embossedField && field.confidence < sureOfForeignName &&
         RegexHelper::matches("[A-Z]", field.text) && !isSpeltInPinyin(field.text);
}

/// Marks the values of a line of their own that stand within the address: for want of their line they were looked for
/// in all of the text.
void doubtWhatTheAddressGave(std::vector<FieldReport>& fields) {
  const auto address = std::ranges::find(fields, "address", &FieldReport::name);
  if (address == fields.end() || !address->corners) return;
  for (FieldReport& field : fields) {
    const bool hasOwnLine = std::ranges::find(fieldsOfOwnLine, field.name) != fieldsOfOwnLine.end();
    if (!hasOwnLine || field.corners != address->corners) continue;
    field.isDoubtful = true;
    field.confidence = std::min(field.confidence, confidenceOfDoubtful);
  }
}

FieldReport reportOn(const RecordField& field, const Record& record, const Observations& blocks, const Place& place) {
  FieldReport report{.name = field.name, .text = textOf(field.value(record)), .corners = {}};
  const Observations sources = sourcesOf(report.text, blocks);
  if (!sources.empty()) report.corners = place.cornersOn(united(sources));
  report.isDoubtful = isDoubtful(record, field.name) || (report.corners && !place.holds(*report.corners));
  if (report.text.empty()) return report;

  report.confidence = sources.empty() ? confidenceWithoutBlock : confidenceIn(sources, field.name);
  if (report.confidence < leastConfidence || isUncertainName(report)) report.isDoubtful = true;
  if (const auto passed = checked(checksOf(record), field.name)) {
    if (!*passed)
      report.confidence = std::min(report.confidence, confidenceOfFailed);
    else if (!std::holds_alternative<BankCardInfo>(record))
      report.confidence = std::max(report.confidence, confidenceOfChecked);
  }
  if (report.isDoubtful) report.confidence = std::min(report.confidence, confidenceOfDoubtful);
  return report;
}

/// What the record itself gives to warn of.
std::vector<ReadingWarning> warningsOf(const Record& record, std::chrono::year_month_day date) {
  std::vector<ReadingWarning> warnings;
  if (const auto* back = std::get_if<IDCardBackInfo>(&record)) {
    const std::string day = formatted("{:04}{:02}{:02}", static_cast<int>(date.year()),
                                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    if (back->endDate && *back->endDate < day) warnings.push_back(ReadingWarning::expired);
    if (back->startDate && *back->startDate > day) warnings.push_back(ReadingWarning::notYetValid);
  }
  if (std::ranges::any_of(checksOf(record), [](const RecordCheck& check) { return check.passed == false; }))
    warnings.push_back(ReadingWarning::checkFailed);
  return warnings;
}

}  // namespace

bool isDoubtful(const Record& record, std::string_view name) {
  const auto& fields = documentKind(record).fields;
  const auto field = std::ranges::find(fields, name, &RecordField::name);
  const auto shape = std::ranges::find_if(
      shapes, [&](const FieldShape& known) { return known.mode == documentKind(record).mode && known.field == name; });
  if (field == fields.end() || shape == shapes.end()) return false;
  if (!RegexHelper::matches(shape->pattern, textOf(field->value(record)))) return true;
  const auto* back = std::get_if<IDCardBackInfo>(&record);
  return back != nullptr && name == "validityPeriod" && !lastsAsCardsDo(*back);
}

Reading withReport(const ReadingParts& parts, const Size& card, const Observations& blocks, Record record) {
  const Place place{parts.origin.projection, card, parts.origin.outline};
  ReadingReport report{.unreadReason = std::nullopt, .stage = std::nullopt, .turned = parts.turned};
  for (const RecordField& field : documentKind(record).fields)
    if (field.display != FieldDisplay::hidden) report.fields.push_back(reportOn(field, record, blocks, place));
  doubtWhatTheAddressGave(report.fields);
  if (place.outline) report.outline = renamed(*place.outline, parts.turned);
  report.warnings = warningsOf(record, parts.date);
  if (parts.origin.picture) {
    PicturedCard pictured{.picture = *parts.origin.picture, .outline = report.outline, .texts = {}};
    for (const Observation& block : blocks) pictured.texts.push_back(place.cornersOn(block.boundingBox));
    const PictureFindings findings = lookedAt(pictured);
    report.dotsPerMillimetre = findings.dotsPerMillimetre;
    report.warnings.insert(report.warnings.begin(), findings.warnings.begin(), findings.warnings.end());
    for (FieldReport& field : report.fields)
      field.hasGlare = field.corners && std::ranges::any_of(findings.glare, [&](const Rect& spot) {
                         return intersection(spot, surrounding(*field.corners)).area() > 0;
                       });
  }
  std::ranges::sort(report.warnings);
  return {.record = std::move(record), .report = std::move(report)};
}

}  // namespace pravik
