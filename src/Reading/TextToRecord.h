#pragma once

#include <optional>

#include "Parsers/BankCardParser.h"
#include "Records/DocumentKind.h"
#include "Records/Observation.h"

namespace pravik {

/// Whether what a photograph does to text is undone before the parsers' rules apply, or these apply to the letter.
enum class TextHandling : std::uint8_t { corrected, literal };

/// The record of a card of this kind that blocks of text give; absent when its parser finds none, and for codes, which
/// have no text.
std::optional<Record> recordIn(const Observations& observations, OCRScanMode mode,
                               TextHandling handling = TextHandling::corrected);
/// The same for blocks that are post-corrected already.
std::optional<Record> recordInCorrected(const Observations& corrected, OCRScanMode mode);
/// What post-corrected blocks give of a bank card without its number.
PartialBankCardInfo partialCardInCorrected(const Observations& corrected);

}  // namespace pravik
