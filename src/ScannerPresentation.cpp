#include <memory>
#include <string>
#include <utility>

#include "Pravik.h"
#include "UI/OCRScannerViewController.h"
#include "UI/ScannerContinuationAdapter.h"

namespace pravik {
namespace {

using Callbacks = ScannerContinuationAdapter::Callbacks;

/// The one answer to a suspended caller. Whoever lets go of it without an answer has cancelled.
template <class T>
class Answer {
 public:
  explicit Answer(std::function<void(Result<T>)> completion) : completion_(std::move(completion)) {}
  ~Answer() { give(tl::unexpected(OCRError::cancelled())); }
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;
  Answer(Answer&&) = delete;
  Answer& operator=(Answer&&) = delete;

  void give(Result<T> result) {
    if (const auto completion = std::exchange(completion_, nullptr)) completion(std::move(result));
  }

 private:
  std::function<void(Result<T>)> completion_;
};

/// A scan to be presented: what it looks for, and where.
struct Scan {
  PravikSDK sdk;
  Platform platform;
  OCRScanMode mode;
  /// Weak, so that the suspended caller does not keep alive what it waits for.
  std::weak_ptr<Stage> stage;
};

template <class Info>
using RecordCallback = std::function<void(const OCRScannerResult<Info>&)> Callbacks::*;

template <class Info>
void present(Scan scan, const std::shared_ptr<Answer<OCRScannerResult<Info>>>& answer, RecordCallback<Info> onRecord) {
  scan.platform.stage = scan.stage.lock();
  if (!scan.platform.stage) return;
  Callbacks callbacks;
  callbacks.*onRecord = [answer](const OCRScannerResult<Info>& result) { answer->give(result); };
  callbacks.onError = [answer](const OCRError& error) { answer->give(tl::unexpected(error)); };
  callbacks.onCancel = [answer] { answer->give(tl::unexpected(OCRError::cancelled())); };
  const auto adapter = std::make_shared<ScannerContinuationAdapter>(std::move(callbacks));
  const auto screen = std::make_shared<OCRScannerViewController>(scan.mode, false, scan.sdk, scan.platform);
  screen->delegate = adapter;
  screen->continuationDelegate = adapter;
  scan.platform.stage->present(screen, true, {});
}

template <class Info>
Task<OCRScannerResult<Info>> run(const Scan& scan, RecordCallback<Info> onRecord) {
  return suspendUntilCalled<OCRScannerResult<Info>>([scan, onRecord](auto completion) {
    if (!scan.platform.dispatch || scan.stage.expired())
      return completion(tl::unexpected(OCRError::recognitionFailed("no stage is available to show the scanner on")));
    auto answer = std::make_shared<Answer<OCRScannerResult<Info>>>(std::move(completion));
    scan.platform.dispatch->async([scan, answer, onRecord] { present<Info>(scan, answer, onRecord); });
  });
}

}  // namespace

bool PravikSDK::checkCameraPermission() const {
  return platform_.captureSystem &&
         platform_.captureSystem->authorizationStatus() == CameraAuthorizationStatus::authorized;
}

Task<bool> PravikSDK::requestCameraPermission() const {
  return suspendUntilCalled<bool>([captureSystem = platform_.captureSystem](const auto& completion) {
    const auto status = captureSystem ? captureSystem->authorizationStatus() : CameraAuthorizationStatus::denied;
    if (status != CameraAuthorizationStatus::notDetermined)
      return completion(status == CameraAuthorizationStatus::authorized);
    captureSystem->requestAccess([completion](bool granted) { completion(granted); });
  });
}

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

}  // namespace pravik
