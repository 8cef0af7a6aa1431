#include "Reading/CrossAttemptAccumulator.h"

#include <utility>

#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberFusion.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"

namespace pravik {

void CardNumberPieces::append(const CardNumberPieces& more) {
  fragments.insert(fragments.end(), more.fragments.begin(), more.fragments.end());
  binHints.insert(binHints.end(), more.binHints.begin(), more.binHints.end());
}

void CrossAttemptAccumulator::add(CardNumberPieces pieces, const PartialBankCardInfo& partialInfo) {
  const std::lock_guard lock(mutex_);
  photos_.push_back(std::move(pieces));
  if (photos_.size() > maximumPhotos) photos_.pop_front();
  if (partialInfo.bankName) bankName_ = partialInfo.bankName;
  if (partialInfo.cardType) cardType_ = partialInfo.cardType;
}

void CrossAttemptAccumulator::reset() {
  const std::lock_guard lock(mutex_);
  photos_.clear();
  bankName_.reset();
  cardType_.reset();
}

std::optional<BankCardInfo> CrossAttemptAccumulator::tryFusion() const {
  const std::lock_guard lock(mutex_);
  CardNumberPieces all;
  for (const CardNumberPieces& photo : photos_) all.append(photo);
  if (all.fragments.empty()) return std::nullopt;
  OCRLogger::info(
      [&] { return formatted("跨拍照融合: {}个片段, {}个BIN提示", all.fragments.size(), all.binHints.size()); });
  const auto number = fuseCardNumber(all.fragments, all.binHints, fusedCardNumberLength);
  if (!number) return std::nullopt;
  BankCardInfo info{.cardNumber = formatCardNumber(*number),
                    .rawCardNumber = *number,
                    .bankName = bankName_,
                    .cardType = cardType_,
                    .cardholderName = std::nullopt};
  OCRLogger::debug([&] { return "跨拍照融合成功: " + info.cardNumber; });
  return info;
}

}  // namespace pravik
