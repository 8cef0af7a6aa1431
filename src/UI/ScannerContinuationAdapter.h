#pragma once

#include <functional>
#include <utility>

#include "UI/OCRScannerDelegate.h"

namespace pravik {

/// A delegate that hands the first report to its callback and is deaf from then on, so that one of the callbacks is
/// called at most once.
class ScannerContinuationAdapter : public OCRScannerDelegate {
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

  explicit ScannerContinuationAdapter(Callbacks callbacks) : callbacks_(std::move(callbacks)) {}

  void scannerDidRecognizeBankCard(OCRScannerViewController& /*scanner*/,
                                   const OCRScannerResult<BankCardInfo>& result) override {
    report(&Callbacks::onBankCard, result);
  }
  void scannerDidRecognizeIDCardFront(OCRScannerViewController& /*scanner*/,
                                      const OCRScannerResult<IDCardFrontInfo>& result) override {
    report(&Callbacks::onIDCardFront, result);
  }
  void scannerDidRecognizeIDCardBack(OCRScannerViewController& /*scanner*/,
                                     const OCRScannerResult<IDCardBackInfo>& result) override {
    report(&Callbacks::onIDCardBack, result);
  }
  void scannerDidScanCode(OCRScannerViewController& /*scanner*/,
                          const OCRScannerResult<CodeScanResult>& result) override {
    report(&Callbacks::onCode, result);
  }
  void scannerDidFailWithError(OCRScannerViewController& /*scanner*/, const OCRError& error) override {
    report(&Callbacks::onError, error);
  }
  void scannerDidCancel(OCRScannerViewController& /*scanner*/) override { report(&Callbacks::onCancel); }

 private:
  template <class Callback, class... Value>
  void report(Callback Callbacks::* callback, const Value&... value) {
    const Callbacks callbacks = finish();
    if (callbacks.*callback) (callbacks.*callback)(value...);
  }

  /// Clears all six and gives them back: they are cleared before one is called, so that a callback that throws, or that
  /// brings about another report, changes nothing.
  Callbacks finish() { return std::exchange(callbacks_, {}); }

  Callbacks callbacks_;
};

}  // namespace pravik
