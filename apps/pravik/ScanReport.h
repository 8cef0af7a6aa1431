#pragma once

#include <functional>
#include <utility>

#include "UI/OCRScannerDelegate.h"
#include "backends/json/Answer.h"
#include "backends/json/Checks.h"

namespace pravik::cli {

/// Makes an answer of whatever a scanner reports.
class ScanReport final : public OCRScannerDelegate {
 public:
  explicit ScanReport(std::function<void(const Answer&)> tell) : tell_(std::move(tell)) {}

  void scannerDidRecognizeBankCard(OCRScannerViewController& /*scanner*/,
                                   const OCRScannerResult<BankCardInfo>& result) override {
    tell_(recordAnswer(result.info));
  }
  void scannerDidRecognizeIDCardFront(OCRScannerViewController& /*scanner*/,
                                      const OCRScannerResult<IDCardFrontInfo>& result) override {
    tell_(recordAnswer(result.info));
  }
  void scannerDidRecognizeIDCardBack(OCRScannerViewController& /*scanner*/,
                                     const OCRScannerResult<IDCardBackInfo>& result) override {
    tell_(recordAnswer(result.info));
  }
  void scannerDidScanCode(OCRScannerViewController& /*scanner*/,
                          const OCRScannerResult<CodeScanResult>& result) override {
    tell_({{"result", toJson(result.info)}});
  }
  void scannerDidFailWithError(OCRScannerViewController& /*scanner*/, const OCRError& error) override {
    tell_(answerOf(error));
  }
  void scannerDidCancel(OCRScannerViewController& /*scanner*/) override { tell_(answerOf(OCRError::cancelled())); }

 private:
  std::function<void(const Answer&)> tell_;
};

}  // namespace pravik::cli
