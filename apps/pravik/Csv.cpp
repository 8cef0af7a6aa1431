#include "apps/pravik/Csv.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "Reading/RecordChecks.h"
#include "Utils/Text.h"

namespace pravik::cli {
namespace {

/// Where the value of a column stands in an answer.
struct Column {
  std::string name;
  Json::json_pointer place;
};

template <std::size_t... index>
std::array<Record, sizeof...(index)> emptyRecords(std::index_sequence<index...> /*indices*/) {
  return {Record(std::in_place_index<index>)...};
}

/// The checks do not depend on what the record says.
std::vector<RecordCheck> checksOf(const DocumentKind& document) {
  static const auto records = emptyRecords(std::make_index_sequence<std::variant_size_v<Record>>());
  return pravik::checksOf(records.at(static_cast<std::size_t>(document.mode)));
}

std::vector<Column> columnsOf(const DocumentKind* document) {
  std::vector<Column> columns;
  const auto add = [&](const std::string& group, std::string_view name) {
    columns.push_back({std::string(name), Json::json_pointer(group + "/" + std::string(name))});
  };
  for (const char* name : {"file", "page", "kind"}) add("", name);
  if (document == nullptr) add("/result", "text");
  if (document != nullptr) {
    for (const RecordField& field : document->fields) add("/result", field.name);
    for (const RecordCheck& check : checksOf(*document)) add("/checks", check.kind.name);
  }
  columns.push_back({"error", Json::json_pointer("/error/code")});
  add("/error", "message");
  columns.push_back({"reason", Json::json_pointer("/error/context/reason")});
  for (const char* name : {"doubtful", "warnings", "problems"}) add("", name);
  return columns;
}

std::string textOf(const Json& value) {
  if (value.is_null()) return {};
  if (value.is_string()) return utf8(codePoints(value.get<std::string>()));
  if (!value.is_array()) return jsonText(value);
  std::string lines;
  for (const Json& line : value) lines += (lines.empty() ? "" : "\n") + textOf(line);
  return lines;
}

/// What is printed on a picture must not be run by the spreadsheet that opens it.
std::string harmless(const std::string& text) {
  constexpr std::string_view formulaStarts = "=+-@\t\r";
  return text.size() > 1 && formulaStarts.find(text[0]) != std::string_view::npos ? "'" + text : text;
}

std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quotes = "\"";
  for (const char c : text) quotes.append(c == '"' ? 2 : 1, c);
  return quotes + '"';
}

/// The values of a row, made by a function of each column.
template <class Value>
std::string row(const DocumentKind* document, const Value& valueOf) {
  std::string line;
  for (const Column& column : columnsOf(document)) line += quoted(harmless(valueOf(column))) + ',';
  line.pop_back();
  return line + "\r\n";
}

}  // namespace

std::string csvHeader(const DocumentKind* document) {
  return row(document, [](const Column& column) { return column.name; });
}

std::string csvRow(const DocumentKind* document, const Answer& answer) {
  static const Json::json_pointer report("/report/text");
  return row(document, [&](const Column& column) {
    if (answer.contains(column.place)) return textOf(answer[column.place]);
    // A file that is no picture has its reason in the context; one that could not be read has a report.
    return column.name == "reason" && answer.contains(report) ? textOf(answer[report]) : std::string();
  });
}

}  // namespace pravik::cli
