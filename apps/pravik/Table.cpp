#include "apps/pravik/Table.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <vector>

#include "Reading/RecordChecks.h"
#include "Records/DocumentKind.h"
#include "Utils/Format.h"
#include "Utils/Text.h"

namespace pravik::cli {
namespace {

constexpr int indent = 2;
constexpr int gap = 2;

int columns(UChar32 character) {
  const auto category = U_GET_GC_MASK(character);
  if ((category & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CC_MASK | U_GC_CF_MASK)) != 0) return 0;
  const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

struct Row {
  std::string field;
  std::string value;
  std::string note;
};

std::string valueText(const Json& value, Language language) {
  if (value.is_null()) return "-";
  if (value.is_boolean() && language == Language::chinese) return value.get<bool>() ? "是" : "否";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_string()) return value.get<std::string>().empty() ? "-" : value.get<std::string>();
  return jsonText(value);
}

/// A nested object becomes rows of its own, their names joined with a dot.
void appendRows(const Json& object, const std::string& prefix, Language language, std::vector<Row>& rows) {
  for (const auto& [key, value] : object.items()) {
    if (value.is_object())
      appendRows(value, prefix + key + ".", language, rows);
    else
      rows.push_back({prefix + key, valueText(value, language), {}});
  }
}

std::vector<Row> resultRows(const Answer& answer, Language language) {
  std::vector<Row> rows;
  appendRows(answer["result"], {}, language, rows);
  for (Row& row : rows) row.note = fieldNote(answer, row.field, language);
  return rows;
}

std::vector<Row> errorRows(const Answer& answer, Language language) {
  std::vector<Row> rows{{"error", errorText(answer, language), {}}};
  if (const std::string reason = reasonText(answer, language); !reason.empty()) rows.push_back({"reason", reason, {}});
  return rows;
}

/// Control characters must not reach the terminal: a code may say anything. Lines after the first stand below it.
std::string printable(std::string_view text, int continuation) {
  std::string lines;
  for (const char32_t character : codePoints(text)) {
    if (character == U'\n')
      lines.append(1, '\n').append(static_cast<std::size_t>(continuation), ' ');
    else
      lines += utf8(std::u32string(1, u_iscntrl(static_cast<UChar32>(character)) ? U'\uFFFD' : character));
  }
  return lines;
}

std::string detailsOfState(const Json& event) {
  const std::string state = event["state"];
  return event.contains("message") ? state + ": " + event["message"].get<std::string>() : state;
}

std::string detailsOfHint(const Json& event) {
  return event["text"];
}

std::string detailsOfOutline(const Json& event) {
  const Json& box = event["boundingBox"];
  if (box.is_null()) return "none";
  return formatted("x {:.3f} y {:.3f} width {:.3f} height {:.3f}", box["x"].get<double>(), box["y"].get<double>(),
                   box["width"].get<double>(), box["height"].get<double>());
}

std::string detailsOfTimer(const Json& event) {
  return formatted("{:.1f} s {}", event["seconds"].get<double>(), event["change"].get<std::string>());
}

std::string detailsOfButton(const Json& event) {
  return event["shown"].get<bool>() ? "manual capture is offered" : "manual capture is hidden";
}

std::string detailsOfTap(const Json& /*event*/) {
  return "manual capture";
}

std::string detailsOfCapture(const Json& event) {
  return formatted("attempt {}", event["attempt"].get<int>());
}

std::string detailsOfAttempt(const Json& event) {
  return formatted("attempt {} failed", event["attempt"].get<int>());
}

struct EventText {
  std::string_view event;
  std::string (*details)(const Json& event);
};

constexpr std::array<EventText, 8> eventTexts{{{"state", detailsOfState},
                                               {"hint", detailsOfHint},
                                               {"outline", detailsOfOutline},
                                               {"timer", detailsOfTimer},
                                               {"button", detailsOfButton},
                                               {"tap", detailsOfTap},
                                               {"capture", detailsOfCapture},
                                               {"attempt", detailsOfAttempt}}};

/// "1. Identity card, portrait side, turned 90 degrees".
std::string cardTitle(std::size_t number, const Json& card, Language language) {
  const bool isChinese = language == Language::chinese;
  std::string title = formatted("  {}. ", number);
  const auto kinds = documentKinds();
  const auto kind =
      std::ranges::find_if(kinds, [&](const DocumentKind& known) { return card["kind"] == known.commandName; });
  if (kind == kinds.end())
    title += isChinese ? "未知类型的卡片" : "A card of no known kind";
  else
    title += isChinese ? kind->displayName : kind->englishName;
  if (const int turned = card["turned"]; turned != 0)
    title += isChinese ? formatted("，旋转 {} 度", turned) : formatted(", turned {} degrees", turned);
  if (card.contains("pair")) title += isChinese ? "，成对" : ", of a pair";
  return title + "\n";
}

std::string cardsTable(const Answer& answer, Language language) {
  std::string table;
  if (answer.contains("file")) table += printable(answer["file"].get<std::string>(), 0) + "\n";
  if (answer["cards"].empty()) return table + "  " + reasonText(answer, language) + "\n";
  std::size_t number = 0;
  for (const Json& card : answer["cards"]) table += cardTitle(++number, card, language) + asTable(card, language);
  return table;
}

}  // namespace

int displayWidth(std::string_view text) {
  int width = 0;
  for (const char32_t character : codePoints(text)) width += columns(static_cast<UChar32>(character));
  return width;
}

std::string padded(std::string_view text, int width) {
  return std::string(text) + std::string(static_cast<std::size_t>(std::max(0, width - displayWidth(text))), ' ');
}

std::string asTable(const Answer& answer, Language language) {
  if (answer.contains("cards")) return cardsTable(answer, language);
  std::vector<Row> rows = isRecognized(answer) ? resultRows(answer, language) : errorRows(answer, language);
  for (const Json& warning : answer.value("warnings", Json::array()))
    rows.push_back({"warning", warningText(warning.get<std::string>(), language), {}});
  for (const Json& problem : answer.value("problems", Json::array()))
    rows.push_back({"problem", ownText(problem.get<std::string>(), language), {}});
  int fieldWidth = 0, valueWidth = 0;
  for (const Row& row : rows) {
    fieldWidth = std::max(fieldWidth, displayWidth(row.field) + gap);
    if (!row.note.empty()) valueWidth = std::max(valueWidth, displayWidth(row.value) + gap);
  }
  std::string table;
  if (answer.contains("file")) table += printable(answer["file"].get<std::string>(), 0);
  if (answer.contains("page")) table += formatted(", page {}", answer["page"].get<int>());
  if (answer.contains("file")) table += '\n';
  for (const Row& row : rows) {
    const std::string value = printable(row.value, indent + fieldWidth);
    table += std::string(indent, ' ') + padded(row.field, fieldWidth);
    table += row.note.empty() ? value : padded(value, valueWidth) + row.note;
    table += '\n';
  }
  return table;
}

std::string asEventLine(const Json& event) {
  const auto name = event["event"].get<std::string>();
  const auto* known = std::ranges::find(eventTexts, name, &EventText::event);
  return formatted("{:9.3f}  {:<8}  {}\n", event["time"].get<double>(), name,
                   known == eventTexts.end() ? "" : known->details(event));
}

}  // namespace pravik::cli
