#include <memory>
#include <utility>

#include "Async/RunOnPool.h"
#include "Async/ScannerContinuationAdapter.h"
#include "Pravik.h"
#include "UI/OCRScannerViewController.h"

// The operations of PravikSDK that show a scanner.
namespace pravik {
namespace {

using Callbacks = ScannerContinuationAdapter::Callbacks;

/// A scan to be presented: what it looks for, and where.
struct Scan {
  PravikSDK sdk;
  std::shared_ptr<const Platform> platform;
  OCRScanMode mode;
  /// Weak, so that the suspended caller does not keep alive what it waits for.
  std::weak_ptr<Stage> stage;
};

template <class Info>
using Completion = std::function<void(Result<OCRScannerResult<Info>>)>;
template <class Info>
using RecordCallback = std::function<void(const OCRScannerResult<Info>&)> Callbacks::*;

template <class Info>
void present(const Scan& scan, const Completion<Info>& completion, RecordCallback<Info> onRecord) {
  Platform platform = *scan.platform;
  platform.stage = scan.stage.lock();
  if (!platform.stage) return;
  Callbacks callbacks;
  callbacks.*onRecord = [completion](const OCRScannerResult<Info>& result) { completion(result); };
  callbacks.onError = [completion](const OCRError& error) { completion(tl::unexpected(error)); };
  callbacks.onCancel = [completion] { completion(tl::unexpected(OCRError::cancelled())); };
  const auto adapter = std::make_shared<ScannerContinuationAdapter>(std::move(callbacks));
  const auto screen = std::make_shared<OCRScannerViewController>(scan.mode, false, scan.sdk, platform);
  screen->delegate = adapter;
  screen->continuationDelegate = adapter;
  platform.stage->present(screen, true, {});
}

/// Whoever lets go of the screen, and with it of the completion, without a report has cancelled.
template <class Info>
Task<OCRScannerResult<Info>> run(const Scan& scan, RecordCallback<Info> onRecord) {
  return suspendUntilCalled<OCRScannerResult<Info>>([scan, onRecord](const Completion<Info>& completion) {
    if (!scan.platform->dispatch || scan.stage.expired())
      return completion(tl::unexpected(OCRError::recognitionFailed("没有可以显示扫描界面的窗口")));
    scan.platform->dispatch->async([scan, completion, onRecord] { present<Info>(scan, completion, onRecord); });
  });
}

}  // namespace

Task<OCRScannerResult<BankCardInfo>> PravikSDK::scanBankCard(const std::shared_ptr<Stage>& from) const {
  return run({*this, platform_, OCRScanMode::bankCard, from}, &Callbacks::onBankCard);
}

Task<OCRScannerResult<IDCardFrontInfo>> PravikSDK::scanIDCardFront(const std::shared_ptr<Stage>& from) const {
  return run({*this, platform_, OCRScanMode::idCardFront, from}, &Callbacks::onIDCardFront);
}

Task<OCRScannerResult<IDCardBackInfo>> PravikSDK::scanIDCardBack(const std::shared_ptr<Stage>& from) const {
  return run({*this, platform_, OCRScanMode::idCardBack, from}, &Callbacks::onIDCardBack);
}

Task<OCRScannerResult<CodeScanResult>> PravikSDK::scanQRCode(const std::shared_ptr<Stage>& from) const {
  return run({*this, platform_, OCRScanMode::qrCode, from}, &Callbacks::onCode);
}

void PravikSDK::scanBankCard(const std::shared_ptr<Stage>& from,
                             Completion<OCRScannerResult<BankCardInfo>> completion) const {
  runWithCompletion(platform_->dispatch, scanBankCard(from), std::move(completion));
}

void PravikSDK::scanIDCardFront(const std::shared_ptr<Stage>& from,
                                Completion<OCRScannerResult<IDCardFrontInfo>> completion) const {
  runWithCompletion(platform_->dispatch, scanIDCardFront(from), std::move(completion));
}

void PravikSDK::scanIDCardBack(const std::shared_ptr<Stage>& from,
                               Completion<OCRScannerResult<IDCardBackInfo>> completion) const {
  runWithCompletion(platform_->dispatch, scanIDCardBack(from), std::move(completion));
}

void PravikSDK::scanQRCode(const std::shared_ptr<Stage>& from,
                           Completion<OCRScannerResult<CodeScanResult>> completion) const {
  runWithCompletion(platform_->dispatch, scanQRCode(from), std::move(completion));
}

}  // namespace pravik
