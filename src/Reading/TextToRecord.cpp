#include "Reading/TextToRecord.h"

#include <utility>
#include <variant>

#include "Parsers/BankCardParser.h"
#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"
#include "Reading/CardHolder.h"
#include "Reading/PostCorrection.h"

namespace pravik {
namespace {

std::optional<Record> parsed(const Observations& observations, OCRScanMode mode) {
  switch (mode) {
    case OCRScanMode::bankCard:
      return BankCardParser{}.parse(observations);
    case OCRScanMode::idCardFront:
      return IDCardFrontParser{}.parse(observations);
    case OCRScanMode::idCardBack:
      return IDCardBackParser{}.parse(observations);
    case OCRScanMode::qrCode:
      return std::nullopt;
  }
  return std::nullopt;
}

/// What a parser took for a value was a label, and nothing else was found.
bool saysNothing(const Record& record) {
  const auto* back = std::get_if<IDCardBackInfo>(&record);
  return back != nullptr && back->issuingAuthority.empty() && back->validityPeriod.empty();
}

}  // namespace

std::optional<Record> recordIn(const Observations& observations, OCRScanMode mode, TextHandling handling) {
  const DocumentKind& kind = documentKind(mode);
  if (handling == TextHandling::literal || !kind.scene) return parsed(observations, mode);
  const Observations corrected = postCorrected(observations, *kind.scene);
  std::optional<Record> record = parsed(corrected, mode);
  if (auto* card = record ? std::get_if<BankCardInfo>(&*record) : nullptr; card && !card->cardholderName)
    card->cardholderName = chineseHolder(corrected);
  if (record) record = withoutImpossibleFields(*std::move(record));
  return record && saysNothing(*record) ? std::nullopt : record;
}

}  // namespace pravik
