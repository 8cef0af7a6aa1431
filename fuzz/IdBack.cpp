#include "Parsers/IDCardBackParser.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

// Blocks of text to the record of an emblem side.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::logEverything();
  const auto info = IDCardBackParser{}.parse(fuzz::observationsIn(fuzz::asText(data, size)));
  if (!info) return 0;
  fuzz::require(!info->issuingAuthority.empty() || !info->validityPeriod.empty(), "a record says something");
  fuzz::require(!info->startDate || fuzz::isDigits(*info->startDate, 8), "a start date has eight digits");
  fuzz::require(!info->endDate || fuzz::isDigits(*info->endDate, 8), "an end date has eight digits");
  const std::string start = info->startDate ? *info->startDate + "-" : "";
  const std::string end = info->isLongTerm ? "长期" : info->endDate.value_or("");
  fuzz::require(info->validityPeriod == start + end, "a period consists of its dates");
  fuzz::require(!info->isLongTerm || !info->endDate, "a card without an end date has none");
  return 0;
}
