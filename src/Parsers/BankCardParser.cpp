#include "Parsers/BankCardParser.h"

#include <vector>

#include "Parsers/BankCardDetails.h"
#include "Parsers/BankName.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberExtraction.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

std::string fullText(const Observations& observations) {
  std::vector<std::string> texts;
  for (const auto& block : observations) texts.push_back(block.text);
  return joined(texts, "\n");
}

std::string describe(const BankCardInfo& info) {
  return formatted("解析结果: 卡号='{}', 银行='{}', 类型='{}', 持卡人='{}'", info.cardNumber,
                   info.bankName.value_or(""), info.cardType ? localizedName(*info.cardType) : "",
                   info.cardholderName.value_or(""));
}

}  // namespace

std::optional<BankCardInfo> BankCardParser::parse(const Observations& observations) const {
  OCRLogger::dumpObservations(observations, "Bank Card OCR");
  const auto number = extractCardNumber(observations);
  if (!number) {
    OCRLogger::error([] { return std::string("卡号提取失败，放弃解析"); });
    return std::nullopt;
  }
  OCRLogger::debug([&] { return "卡号提取成功: " + number->digits; });
  const std::string text = fullText(observations);
  BankCardInfo info{.cardNumber = formatCardNumber(number->digits),
                    .rawCardNumber = number->digitsAsRead,
                    .bankName = extractBankName(text),
                    .cardType = extractCardType(text, number->digits),
                    .cardholderName = extractCardholderName(text)};
  OCRLogger::debug([&] { return describe(info); });
  return info;
}

PartialBankCardInfo BankCardParser::parsePartialInfo(const Observations& observations) const {
  const auto number = extractCardNumber(observations);
  const std::string text = fullText(observations);
  PartialBankCardInfo info{.cardNumber = std::nullopt,
                           .bankName = extractBankName(text),
                           .cardType = extractCardType(text, number ? number->digits : ""),
                           .cardholderName = extractCardholderName(text)};
  if (number) info.cardNumber = formatCardNumber(number->digits);
  return info;
}

}  // namespace pravik
