#include "Async/OCRScannerDelegate.h"

#include <variant>

namespace pravik {
namespace {

/// Calls the method of the delegate that takes the record's kind.
struct TellRecord {
  OCRScannerDelegate& delegate;
  OCRScannerViewController& scanner;
  const std::optional<Image>& picture;

  void operator()(const BankCardInfo& info) const { delegate.scannerDidRecognizeBankCard(scanner, {info, picture}); }
  void operator()(const IDCardFrontInfo& info) const {
    delegate.scannerDidRecognizeIDCardFront(scanner, {info, picture});
  }
  void operator()(const IDCardBackInfo& info) const {
    delegate.scannerDidRecognizeIDCardBack(scanner, {info, picture});
  }
  void operator()(const CodeScanResult& code) const { delegate.scannerDidScanCode(scanner, {code, picture}); }
};

}  // namespace

void tell(OCRScannerDelegate& delegate, OCRScannerViewController& scanner, const ScannerReport& report) {
  if (report.record) return std::visit(TellRecord{delegate, scanner, report.capturedImage}, *report.record);
  if (report.record.error() == OCRError::cancelled()) return delegate.scannerDidCancel(scanner);
  delegate.scannerDidFailWithError(scanner, report.record.error());
}

}  // namespace pravik
