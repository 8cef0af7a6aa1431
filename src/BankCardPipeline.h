#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "BankCardInfo.h"
#include "Core/ImagePreprocessor.h"
#include "Core/TextRecognizer.h"
#include "CrossAttemptAccumulator.h"
#include "Parsers/BankCardParser.h"
#include "Platform/Dispatch.h"
#include "Platform/Image.h"
#include "Platform/PhotoLibrary.h"
#include "Task.h"

namespace pravik {

/// The stage of the bank-card pipeline that gave the number: the reading of the whole card, that of the card
/// enhanced once more, that of the band around the number, or the fusion of what all of them read in pieces.
enum class BankCardStage : std::uint8_t { firstReading, enhancedRetry, numberBand, fusion };

/// A bank card and how it was read.
struct BankCardReading {
  BankCardInfo info;
  BankCardStage stage = BankCardStage::firstReading;
};

/// What reading a bank card needs. A call takes it by value, so that it outlives the SDK that began it.
struct BankCardPipeline {
  std::shared_ptr<Dispatch> dispatch;
  TextRecognizer recognizer;
  ImagePreprocessor preprocessor;
  BankCardParser parser;
  /// Takes the pictures of every stage for a person to look at; absent when none are wanted.
  std::shared_ptr<PhotoLibrary> debugPictures;
  /// Takes the fragments of a call that found no number.
  std::shared_ptr<CrossAttemptAccumulator> accumulator;
};

/// Reads a bank card in up to four stages, each only when those before gave no number. Throws invalidImage when the
/// image has no pixels or too many, sceneMismatch when the picture shows something else, insufficientText when no
/// stage gave a number, recognitionFailed when the text engine fails.
Task<BankCardReading> readBankCard(BankCardPipeline pipeline, Image image);

/// The vertical centre of the row with the most digits, as a fraction of the height from the top: that of the row's
/// first block. Absent when no row has six digits.
std::optional<double> detectCardNumberRowY(const Observations& observations);

}  // namespace pravik
