#include "backends/json/Answer.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "Reading/RecordChecks.h"

namespace pravik {
namespace {

Json jsonOf(const FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  return nullptr;
}

Json jsonOf(UnreadReason reason) {
  return {{"reason", codeOf(reason)}, {"text", chineseText(reason)}};
}

/// With three digits behind the point: more would say nothing.
double rounded(double value) {
  return std::round(value * 1000) / 1000;
}

Json jsonOf(const Quadrilateral& corners) {
  Json points = Json::array();
  for (const Point& corner : {corners.topLeft, corners.topRight, corners.bottomRight, corners.bottomLeft})
    points.push_back({rounded(corner.x), rounded(corner.y)});
  return points;
}

Answer cardAnswer(const CardReading& card) {
  Answer answer{{"kind", card.kind ? Json(documentKind(*card.kind).commandName) : Json(nullptr)},
                {"corners", jsonOf(card.corners)},
                {"turned", card.reading.report.turned}};
  if (card.isOneOfAPair) answer["pair"] = true;
  answer.update(readingAnswer(card.reading));
  if (card.reading.record) answer.update(reportJson(card.reading.report));
  if (!card.kind) answer["text"] = card.text;
  return answer;
}

}  // namespace

Answer recordAnswer(const Record& record) {
  Answer answer{{"result", Json::object()}};
  for (const RecordField& field : documentKind(record).fields)
    answer["result"][std::string(field.name)] = jsonOf(field.value(record));
  for (const RecordCheck& check : checksOf(record))
    answer["checks"][std::string(check.kind.name)] = check.passed ? Json(*check.passed) : Json(nullptr);
  return answer;
}

Json reportJson(const ReadingReport& report) {
  const auto cornersOrNull = [](const std::optional<Quadrilateral>& corners) {
    return corners ? jsonOf(*corners) : Json(nullptr);
  };
  Json json{
      {"fields", Json::object()},
      {"outline", cornersOrNull(report.outline)},
      {"dotsPerMillimetre", report.dotsPerMillimetre > 0 ? Json(rounded(report.dotsPerMillimetre)) : Json(nullptr)}};
  for (const FieldReport& field : report.fields) {
    Json& entry = json["fields"][std::string(field.name)];
    entry = {
        {"text", field.text}, {"confidence", rounded(field.confidence)}, {"corners", cornersOrNull(field.corners)}};
    if (field.isDoubtful) entry["doubtful"] = true;
    if (field.hasGlare) entry["glare"] = true;
  }
  return json;
}

Answer readingAnswer(const Reading& reading) {
  Answer answer = reading.record ? recordAnswer(*reading.record) : answerOf(reading.record.error());
  if (const auto reason = reading.report.unreadReason) answer["report"] = jsonOf(*reason);
  if (const int degrees = reading.report.turned) answer["turned"] = degrees;
  for (const ReadingWarning warning : reading.report.warnings) answer["warnings"].push_back(codeOf(warning));
  for (const FieldReport& field : reading.report.fields)
    if (field.isDoubtful) answer["doubtful"].push_back(field.name);
  return answer;
}

Answer answerOf(const OCRError& error, const std::string& reason) {
  Json context(error.reportContext());
  if (!reason.empty()) context["reason"] = reason;
  return {{"error", {{"code", error.errorCode()}, {"message", error.errorDescription()}, {"context", context}}}};
}

Answer textAnswer(const Result<std::string>& result) {
  return result ? Answer{{"result", {{"text", *result}}}} : answerOf(result.error());
}

Answer cardsAnswer(const CardsReading& reading) {
  Answer answer{{"cards", Json::array()}};
  for (const CardReading& card : reading.cards) answer["cards"].push_back(cardAnswer(card));
  if (reading.unreadReason) answer["report"] = jsonOf(*reading.unreadReason);
  return answer;
}

Answer invalidInputAnswer(const std::string& message) {
  return {{"error", {{"code", "invalid_input"}, {"message", message}}}};
}

Answer withKind(std::string_view kind, const Answer& answer) {
  Answer whole{{"kind", kind}};
  whole.update(answer);
  return whole;
}

bool isQuestionable(const Answer& answer) {
  const auto cards = answer.find("cards");
  if (cards != answer.end()) return std::ranges::any_of(*cards, isQuestionable);
  const auto warnings = answer.find("warnings");
  return answer.contains("doubtful") ||
         (warnings != answer.end() &&
          std::ranges::find(*warnings, Json(codeOf(ReadingWarning::checkFailed))) != warnings->end());
}

bool isRecognized(const Answer& answer) {
  const auto cards = answer.find("cards");
  if (cards == answer.end()) return answer.contains("result");
  return !cards->empty() && std::ranges::all_of(*cards, isRecognized);
}

std::string jsonText(const Json& json, bool indented) {
  return json.dump(indented ? 2 : -1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace pravik
