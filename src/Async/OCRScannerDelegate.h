#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "Platform/Image.h"
#include "Records/DocumentKind.h"
#include "Records/OCRError.h"

namespace pravik {

class OCRScannerViewController;

/// What a scan brought: the record, and the photo it was read from when there is one.
template <class Info>
struct OCRScannerResult {
  Info info;
  std::optional<Image> capturedImage;
};

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

/// A report of a scanner, whatever it scans: the record and the picture it was read from when there is one, or the
/// error, which is `cancelled` when the user closed the screen.
struct ScannerReport {
  Result<Record> record;
  std::optional<Image> capturedImage = {};
};

/// Hands a report to the method of the delegate that it belongs to.
void tell(OCRScannerDelegate& delegate, OCRScannerViewController& scanner, const ScannerReport& report);

/// A delegate that hears every report in one place.
class ScannerListener : public OCRScannerDelegate {
 public:
  explicit ScannerListener(std::function<void(const ScannerReport&)> onReport) : onReport_(std::move(onReport)) {}

  void scannerDidRecognizeBankCard(OCRScannerViewController& /*scanner*/,
                                   const OCRScannerResult<BankCardInfo>& result) override {
    onReport_({result.info, result.capturedImage});
  }
  void scannerDidRecognizeIDCardFront(OCRScannerViewController& /*scanner*/,
                                      const OCRScannerResult<IDCardFrontInfo>& result) override {
    onReport_({result.info, result.capturedImage});
  }
  void scannerDidRecognizeIDCardBack(OCRScannerViewController& /*scanner*/,
                                     const OCRScannerResult<IDCardBackInfo>& result) override {
    onReport_({result.info, result.capturedImage});
  }
  void scannerDidScanCode(OCRScannerViewController& /*scanner*/,
                          const OCRScannerResult<CodeScanResult>& result) override {
    onReport_({result.info, result.capturedImage});
  }
  void scannerDidFailWithError(OCRScannerViewController& /*scanner*/, const OCRError& error) override {
    onReport_({tl::unexpected(error)});
  }
  void scannerDidCancel(OCRScannerViewController& /*scanner*/) override {
    onReport_({tl::unexpected(OCRError::cancelled())});
  }

 private:
  std::function<void(const ScannerReport&)> onReport_;
};

}  // namespace pravik
