#include "backends/json/Answer.h"

#include <optional>

namespace pravik {
namespace {

Json orNull(const std::optional<std::string>& value) {
  return value ? Json(*value) : Json(nullptr);
}

}  // namespace

Json toJson(const IDCardFrontInfo& info) {
  return {{"name", info.name},           {"gender", info.gender},       {"ethnicity", info.ethnicity},
          {"birthDate", info.birthDate}, {"birthYear", info.birthYear}, {"birthMonth", info.birthMonth},
          {"birthDay", info.birthDay},   {"address", info.address},     {"idNumber", info.idNumber}};
}

Json toJson(const IDCardBackInfo& info) {
  return {{"issuingAuthority", info.issuingAuthority},
          {"validityPeriod", info.validityPeriod},
          {"startDate", orNull(info.startDate)},
          {"endDate", orNull(info.endDate)},
          {"isLongTerm", info.isLongTerm}};
}

Json toJson(const BankCardInfo& info) {
  return {{"cardNumber", info.cardNumber},
          {"rawCardNumber", info.rawCardNumber},
          {"bankName", orNull(info.bankName)},
          {"cardType", info.cardType ? Json(localizedName(*info.cardType)) : Json(nullptr)},
          {"cardholderName", orNull(info.cardholderName)}};
}

Json toJson(const CodeScanResult& code) {
  return {{"payload", code.payload}, {"symbology", code.symbology}};
}

Answer answerOf(const OCRError& error, const std::string& reason) {
  Json context(error.reportContext());
  if (!reason.empty()) context["reason"] = reason;
  return {{"error", {{"code", error.errorCode()}, {"message", error.errorDescription()}, {"context", context}}}};
}

Answer codeAnswer(const Result<CodeScanResult>& result) {
  return result ? Answer{{"result", toJson(*result)}} : answerOf(result.error());
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
