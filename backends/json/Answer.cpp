#include "backends/json/Answer.h"

#include <variant>

#include "Reading/RecordChecks.h"

namespace pravik {
namespace {

Json jsonOf(const FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  return nullptr;
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

Answer readingAnswer(const Reading& reading) {
  Answer answer = reading.record ? recordAnswer(*reading.record) : answerOf(reading.record.error());
  if (const auto reason = reading.report.unreadReason)
    answer["report"] = {{"reason", codeOf(*reason)}, {"text", chineseText(*reason)}};
  if (const int degrees = reading.report.turned) answer["turned"] = degrees;
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

Answer invalidInputAnswer(const std::string& message) {
  return {{"error", {{"code", "invalid_input"}, {"message", message}}}};
}

Answer withKind(std::string_view kind, const Answer& answer) {
  Answer whole{{"kind", kind}};
  whole.update(answer);
  return whole;
}

bool isRecognized(const Answer& answer) {
  return answer.contains("result");
}

std::string jsonText(const Json& json, bool indented) {
  return json.dump(indented ? 2 : -1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace pravik
