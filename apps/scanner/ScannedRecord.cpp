#include "apps/scanner/ScannedRecord.h"

#include <string>
#include <utility>

#include "backends/json/Checks.h"

namespace pravik::scanner {
namespace {

constexpr qsizetype shownCharacters = 4;
constexpr QChar maskCharacter(u'*');

class FieldList {
 public:
  FieldList& add(Text label, const std::string& value, bool isSecret = false) {
    if (!value.empty()) fields_.push_back({label, QString::fromStdString(value), isSecret});
    return *this;
  }
  FieldList& addSecret(Text label, const std::string& value) { return add(label, value, true); }
  std::vector<Field> take() { return std::move(fields_); }

 private:
  std::vector<Field> fields_;
};

bool fails(const Json& checks, const char* check) {
  return checks.contains(check) && checks[check] == false;
}

}  // namespace

ScannedRecord describe(const OCRScannerResult<BankCardInfo>& result) {
  const BankCardInfo& info = result.info;
  const std::string type = info.cardType ? std::string(localizedName(*info.cardType)) : std::string();
  return {.fields = FieldList()
                        .addSecret(Text::cardNumber, info.cardNumber)
                        .addSecret(Text::rawCardNumber, info.rawCardNumber)
                        .add(Text::bankName, info.bankName.value_or(""))
                        .add(Text::cardType, type)
                        .add(Text::cardholderName, info.cardholderName.value_or(""))
                        .take(),
          .picture = result.capturedImage,
          .failsCheck = fails(checksOf(info), "luhn"),
          .answer = withKind("bank-card", recordAnswer(info))};
}

ScannedRecord describe(const OCRScannerResult<IDCardFrontInfo>& result) {
  const IDCardFrontInfo& info = result.info;
  return {.fields = FieldList()
                        .add(Text::name, info.name)
                        .add(Text::gender, info.gender)
                        .add(Text::ethnicity, info.ethnicity)
                        .add(Text::birthDate, info.birthDate)
                        .add(Text::address, info.address)
                        .addSecret(Text::idNumber, info.idNumber)
                        .take(),
          .picture = result.capturedImage,
          .failsCheck = fails(checksOf(info), "checkDigit"),
          .answer = withKind("id-front", recordAnswer(info))};
}

ScannedRecord describe(const OCRScannerResult<IDCardBackInfo>& result) {
  const IDCardBackInfo& info = result.info;
  return {.fields = FieldList()
                        .add(Text::issuingAuthority, info.issuingAuthority)
                        .add(Text::validityPeriod, info.validityPeriod)
                        .take(),
          .picture = result.capturedImage,
          .failsCheck = false,
          .answer = withKind("id-back", recordAnswer(info))};
}

ScannedRecord describe(const OCRScannerResult<CodeScanResult>& result) {
  const CodeScanResult& code = result.info;
  return {.fields = FieldList().add(Text::payload, code.payload).add(Text::symbology, code.symbology).take(),
          .picture = result.capturedImage,
          .failsCheck = false,
          .answer = withKind("code", {{"result", toJson(code)}})};
}

QString masked(const QString& value) {
  QString result = value;
  for (qsizetype i = 0; i + shownCharacters < result.size(); ++i)
    if (!result[i].isSpace()) result[i] = maskCharacter;
  return result;
}

}  // namespace pravik::scanner
