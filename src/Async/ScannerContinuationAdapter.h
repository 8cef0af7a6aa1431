#pragma once

#include <functional>
#include <utility>
#include <variant>

#include "Async/OCRScannerDelegate.h"

namespace pravik {

/// A delegate that hands the first report to its callback and ignores later ones, so that one of the callbacks is
/// called at most once.
class ScannerContinuationAdapter : public ScannerListener {
 public:
  /// Any of them may be absent.
  struct Callbacks {
    std::function<void(const OCRScannerResult<BankCardInfo>&)> onBankCard;
    std::function<void(const OCRScannerResult<IDCardFrontInfo>&)> onIDCardFront;
    std::function<void(const OCRScannerResult<IDCardBackInfo>&)> onIDCardBack;
    std::function<void(const OCRScannerResult<CodeScanResult>&)> onCode;
    std::function<void(const OCRError&)> onError;
    std::function<void()> onCancel;
  };

  explicit ScannerContinuationAdapter(Callbacks callbacks)
      : ScannerListener([this](const ScannerReport& report) { answer(report); }), callbacks_(std::move(callbacks)) {}

 private:
  void answer(const ScannerReport& report) {
    const Callbacks callbacks = finish();
    const auto call = [](const auto& callback, const auto&... value) {
      if (callback) callback(value...);
    };
    if (!report.record) {
      if (report.record.error() == OCRError::cancelled()) return call(callbacks.onCancel);
      return call(callbacks.onError, report.record.error());
    }
    const auto& picture = report.capturedImage;
    if (const auto* card = std::get_if<BankCardInfo>(&*report.record))
      call(callbacks.onBankCard, OCRScannerResult<BankCardInfo>{*card, picture});
    if (const auto* front = std::get_if<IDCardFrontInfo>(&*report.record))
      call(callbacks.onIDCardFront, OCRScannerResult<IDCardFrontInfo>{*front, picture});
    if (const auto* back = std::get_if<IDCardBackInfo>(&*report.record))
      call(callbacks.onIDCardBack, OCRScannerResult<IDCardBackInfo>{*back, picture});
    if (const auto* code = std::get_if<CodeScanResult>(&*report.record))
      call(callbacks.onCode, OCRScannerResult<CodeScanResult>{*code, picture});
  }

  /// Clears all six and gives them back: they are cleared before one is called, so that a callback that throws, or that
  /// brings about another report, changes nothing.
  Callbacks finish() { return std::exchange(callbacks_, {}); }

  Callbacks callbacks_;
};

}  // namespace pravik
