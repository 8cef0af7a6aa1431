#include "Records/DocumentKind.h"

#include <array>
#include <cstddef>

namespace pravik {
namespace {

FieldValue valueOf(const std::string& text) {
  return text;
}
FieldValue valueOf(bool flag) {
  return flag;
}
FieldValue valueOf(const std::optional<std::string>& text) {
  return text ? FieldValue(*text) : FieldValue();
}
FieldValue valueOf(const std::optional<BankCardInfo::CardType>& type) {
  return type ? FieldValue(std::string(localizedName(*type))) : FieldValue();
}

template <class Info, class Value>
Info recordOf(Value Info::*);

template <auto member>
FieldValue field(const Record& record) {
  return valueOf(std::get<decltype(recordOf(member))>(record).*member);
}

using enum FieldDisplay;

constexpr std::array<RecordField, 5> bankCardFields{{
    {"cardNumber", "卡号", "Card number", masked, field<&BankCardInfo::cardNumber>},
    {"rawCardNumber", "原始识别结果", "Digits as read", masked, field<&BankCardInfo::rawCardNumber>},
    {"bankName", "发卡行", "Bank", shown, field<&BankCardInfo::bankName>},
    {"cardType", "卡类型", "Type", shown, field<&BankCardInfo::cardType>},
    {"cardholderName", "持卡人", "Cardholder", shown, field<&BankCardInfo::cardholderName>},
}};

constexpr std::array<RecordField, 9> idCardFrontFields{{
    {"name", "姓名", "Name", shown, field<&IDCardFrontInfo::name>},
    {"gender", "性别", "Sex", shown, field<&IDCardFrontInfo::gender>},
    {"ethnicity", "民族", "Ethnicity", shown, field<&IDCardFrontInfo::ethnicity>},
    {"birthDate", "出生", "Born", shown, field<&IDCardFrontInfo::birthDate>},
    {"birthYear", "出生年", "Year of birth", hidden, field<&IDCardFrontInfo::birthYear>},
    {"birthMonth", "出生月", "Month of birth", hidden, field<&IDCardFrontInfo::birthMonth>},
    {"birthDay", "出生日", "Day of birth", hidden, field<&IDCardFrontInfo::birthDay>},
    {"address", "住址", "Address", shown, field<&IDCardFrontInfo::address>},
    {"idNumber", "公民身份号码", "Identity number", masked, field<&IDCardFrontInfo::idNumber>},
}};

constexpr std::array<RecordField, 5> idCardBackFields{{
    {"issuingAuthority", "签发机关", "Issuing office", shown, field<&IDCardBackInfo::issuingAuthority>},
    {"validityPeriod", "有效期限", "Valid", shown, field<&IDCardBackInfo::validityPeriod>},
    {"startDate", "有效期起", "Valid from", hidden, field<&IDCardBackInfo::startDate>},
    {"endDate", "有效期止", "Valid until", hidden, field<&IDCardBackInfo::endDate>},
    {"isLongTerm", "长期有效", "Valid for good", hidden, field<&IDCardBackInfo::isLongTerm>},
}};

constexpr std::array<RecordField, 2> codeFields{{
    {"payload", "内容", "Content", shown, field<&CodeScanResult::payload>},
    {"symbology", "码制", "Type", shown, field<&CodeScanResult::symbology>},
}};

constexpr std::array<DocumentKind, std::variant_size_v<Record>> kinds{{
    {OCRScanMode::bankCard, "bankCard", "bank-card", "银行卡", "Bank card", "将银行卡正面对准此区域",
     SceneType::bankCard, bankCardFields},
    {OCRScanMode::idCardFront, "idCardFront", "id-front", "身份证正面", "Identity card, portrait side",
     "将身份证人像面对准此区域", SceneType::idCardFront, idCardFrontFields},
    {OCRScanMode::idCardBack, "idCardBack", "id-back", "身份证背面", "Identity card, emblem side",
     "将身份证国徽面对准此区域", SceneType::idCardBack, idCardBackFields},
    {OCRScanMode::qrCode, "qrCode", "code", "二维码/条形码", "QR code or bar code", "将二维码/条形码对准此区域",
     std::nullopt, codeFields},
}};

}  // namespace

std::span<const DocumentKind> documentKinds() {
  return kinds;
}

const DocumentKind& documentKind(OCRScanMode mode) {
  return kinds.at(static_cast<std::size_t>(mode));
}

const DocumentKind& documentKind(const Record& record) {
  return kinds.at(record.index());
}

}  // namespace pravik
