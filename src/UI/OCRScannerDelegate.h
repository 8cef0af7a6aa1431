#pragma once

#include "BankCardInfo.h"
#include "CodeScanResult.h"
#include "IDCardBackInfo.h"
#include "IDCardFrontInfo.h"
#include "OCRError.h"
#include "OCRScannerResult.h"

namespace pravik {

class OCRScannerViewController;

/// Hears what a scanner's screen reports; always on the main queue. What it throws is logged.
class OCRScannerDelegate {
 public:
  virtual ~OCRScannerDelegate() = default;

  virtual void scannerDidRecognizeBankCard(OCRScannerViewController& scanner,
                                           const OCRScannerResult<BankCardInfo>& result) = 0;
  virtual void scannerDidRecognizeIDCardFront(OCRScannerViewController& scanner,
                                              const OCRScannerResult<IDCardFrontInfo>& result) = 0;
  virtual void scannerDidRecognizeIDCardBack(OCRScannerViewController& scanner,
                                             const OCRScannerResult<IDCardBackInfo>& result) = 0;
  virtual void scannerDidScanCode(OCRScannerViewController& scanner,
                                  const OCRScannerResult<CodeScanResult>& result) = 0;
  /// The camera may not be used, or the last permitted recognition failed.
  virtual void scannerDidFailWithError(OCRScannerViewController& scanner, const OCRError& error) = 0;
  /// The user closed the screen.
  virtual void scannerDidCancel(OCRScannerViewController& scanner) = 0;
};

}  // namespace pravik
