#include "Async/OCRScannerDelegate.h"

#include <variant>

namespace pravik {
namespace {

/// Calls the method of the delegate that takes the record's kind.
struct TellRecord {
  OCRScannerDelegate& delegate;
  OCRScannerViewController& scanner;
  const ScannerReport& report;

  template <class Info>
  OCRScannerResult<Info> with(const Info& info) const {
    return {info, report.capturedImage, report.reading};
  }
  void operator()(const BankCardInfo& info) const { delegate.scannerDidRecognizeBankCard(scanner, with(info)); }
  void operator()(const IDCardFrontInfo& info) const { delegate.scannerDidRecognizeIDCardFront(scanner, with(info)); }
  void operator()(const IDCardBackInfo& info) const { delegate.scannerDidRecognizeIDCardBack(scanner, with(info)); }
  void operator()(const CodeScanResult& code) const { delegate.scannerDidScanCode(scanner, with(code)); }
};

}  // namespace

void tell(OCRScannerDelegate& delegate, OCRScannerViewController& scanner, const ScannerReport& report) {
  if (report.record) return std::visit(TellRecord{delegate, scanner, report}, *report.record);
  if (report.record.error() == OCRError::cancelled()) return delegate.scannerDidCancel(scanner);
  delegate.scannerDidFailWithError(scanner, report.record.error());
}

}  // namespace pravik
