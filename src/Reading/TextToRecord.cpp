#include "Reading/TextToRecord.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"
#include "Reading/CardHolder.h"
#include "Reading/PostCorrection.h"
#include "Utils/Text.h"

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

/// A row with so many letters is a line of text, unless one of its blocks has nearly a whole number and few letters.
constexpr std::ptrdiff_t lettersOfALine = 5;
constexpr std::size_t nearlyANumber = 13;

/// Latin letters, and the bytes of Chinese characters, of which each has three.
std::ptrdiff_t letterCount(std::string_view text) {
  return std::ranges::count_if(
      text, [](char c) { return ('A' <= c && c <= 'Z') || ('a' <= c && c <= 'z') || static_cast<signed char>(c) < 0; });
}

/// Whether a number was picked from a line of text: a year, a hotline and a sum make sixteen digits too.
bool isPickedFromText(const BankCardInfo& info, const Observations& observations) {
  const auto holdsNumber = [](const Observation& block) {
    return asciiDigits(block.text).size() >= nearlyANumber && letterCount(block.text) < lettersOfALine;
  };
  return std::ranges::any_of(groupedByLine(observations, bankCardRowThreshold), [&](const Observations& line) {
    const std::string text = lineText(line);
    return letterCount(text) >= lettersOfALine && asciiDigits(text).find(info.rawCardNumber) != std::string::npos &&
           std::ranges::none_of(line, holdsNumber);
  });
}

/// The embossed name, mended, else the printed one.
std::optional<std::string> holderOf(const std::optional<std::string>& embossed, const Observations& corrected) {
  return embossed && !isPrintedPhrase(*embossed) ? mendedHolder(*embossed) : chineseHolder(corrected);
}

}  // namespace

std::optional<Record> recordIn(const Observations& observations, OCRScanMode mode, TextHandling handling) {
  const DocumentKind& kind = documentKind(mode);
  if (handling == TextHandling::literal || !kind.scene) return parsed(observations, mode);
  return recordInCorrected(postCorrected(observations, *kind.scene), mode);
}

std::optional<Record> recordInCorrected(const Observations& corrected, OCRScanMode mode) {
  std::optional<Record> record = parsed(corrected, mode);
  if (!record) return std::nullopt;
  if (auto* card = std::get_if<BankCardInfo>(&*record)) {
    if (isPickedFromText(*card, corrected)) return std::nullopt;
    card->cardholderName = holderOf(card->cardholderName, corrected);
  }
  record = withoutLabels(*std::move(record));
  return saysNothing(*record) ? std::nullopt : record;
}

PartialBankCardInfo partialCardInCorrected(const Observations& corrected) {
  PartialBankCardInfo info = BankCardParser{}.parsePartialInfo(corrected);
  info.cardholderName = holderOf(info.cardholderName, corrected);
  return info;
}

}  // namespace pravik
