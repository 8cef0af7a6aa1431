#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Parsers/BankCardParser.h"
#include "Records/BankCardInfo.h"

namespace pravik {

/// The pieces of a card number and the BIN hints that the stages of one or more readings gave.
struct CardNumberPieces {
  std::vector<std::string> fragments;
  std::vector<std::string> binHints;

  void append(const CardNumberPieces& more);
};

/// Keeps what failed photos of one card gave, so that several of them together may give its number. May be used from
/// several threads; the photos of two cards at a time are mixed, which the check digit alone tells apart.
class CrossAttemptAccumulator {
 public:
  /// Older photos than the last eight are forgotten: whoever takes more of them has changed the light, or the card.
  static constexpr std::size_t maximumPhotos = 8;

  void add(CardNumberPieces pieces, const PartialBankCardInfo& partialInfo);
  void reset();

  /// The card whose number the pieces of all photos give; absent when they give none. It carries the bank and the
  /// type that were read last, and no holder.
  std::optional<BankCardInfo> tryFusion() const;

 private:
  mutable std::mutex mutex_;
  std::deque<CardNumberPieces> photos_;
  std::optional<std::string> bankName_;
  std::optional<BankCardInfo::CardType> cardType_;
};

}  // namespace pravik
