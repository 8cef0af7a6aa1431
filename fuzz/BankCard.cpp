#include "Parsers/BankCardParser.h"
#include "Parsers/CardNumber.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

// Blocks of text to the record of a bank card.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::logEverything();
  const Observations blocks = fuzz::observationsIn(fuzz::asText(data, size));
  const auto info = BankCardParser{}.parse(blocks);
  const PartialBankCardInfo partial = BankCardParser{}.parsePartialInfo(blocks);
  fuzz::require(info.has_value() == partial.cardNumber.has_value(), "both ways to read agree about the number");
  if (!info) return 0;
  const std::string digits = asciiDigits(info->cardNumber);
  fuzz::require(isValidCardNumber(digits), "a card number is valid");
  fuzz::require(info->cardNumber == formatCardNumber(digits), "a card number is in groups of four");
  fuzz::require(info->cardNumber == partial.cardNumber && info->bankName == partial.bankName &&
                    info->cardType == partial.cardType && info->cardholderName == partial.cardholderName,
                "both ways to read agree");
  const std::size_t asRead = info->rawCardNumber.size();
  fuzz::require(13 <= asRead && asRead <= 19 && fuzz::isDigits(info->rawCardNumber, asRead),
                "a raw number has 13 to 19 digits");
  fuzz::require(!info->bankName || !info->bankName->empty(), "a bank has a name");
  fuzz::require(!info->cardholderName || info->cardholderName->find('\n') == std::string::npos,
                "a holder's name stands on one line");
  return 0;
}
