#include "apps/scanner/ScannerWindow.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>
#include <QUrl>
#include <filesystem>
#include <utility>

#include "UI/OCRScannerViewController.h"
#include "apps/scanner/Texts.h"
#include "backends/opencv/camera/VideoSource.h"
#include "backends/qt/QtPlatform.h"

namespace pravik::scanner {
namespace {

/// The shape of most cameras' pictures, so that a scanner shows all of them.
constexpr QSize initialSize(1120, 630);
constexpr QSize leastSize(340, 560);

QString droppedFile(const QMimeData& data) {
  for (const QUrl& url : data.urls())
    if (url.isLocalFile()) return url.toLocalFile();
  return {};
}

/// Why nothing was read, with its code: "no QR code or bar code was found (no_code_found)".
QString told(const Answer& failure) {
  return QStringLiteral("%1 (%2)").arg(QString::fromStdString(explanation(failure, languageInUse())),
                                       QString::fromStdString(errorCode(failure)));
}

}  // namespace

ScannerWindow::ScannerWindow(ScannerSettings settings, Platform platform, bool bringsCamera)
    : settings_(std::move(settings)),
      platform_(std::move(platform)),
      bringsCamera_(bringsCamera),
      sdk_(platform_),
      stage_(std::make_shared<QtStage>(*this, platform_)),
      listener_(std::make_shared<ScannerListener>([this](const ScannerReport& report) {
        const auto screen = screen_.lock();
        heard(report, screen && report.record ? screen->lastReport() : ReadingReport{});
      })),
      start_(new StartPage(settings_.mode.value_or(OCRScanMode::bankCard), settings_.camera)),
      result_(new ResultPage) {
  setWindowTitle(text(Text::title));
  setMinimumSize(leastSize);
  resize(initialSize);
  setAcceptDrops(true);
  addWidget(start_);
  addWidget(result_);
  start_->onStart = [this] { scan(); };
  start_->onOpenPhoto = [this] { askForPhoto(); };
  result_->onScanAgain = [this] { scan(); };
  result_->onBack = [this] { setCurrentWidget(start_); };
  start_->setFocus();
}

ScannerWindow::~ScannerWindow() {
  // Before the pages, and with the listener still there to hear nothing more.
  listener_.reset();
  stage_.reset();
}

void ScannerWindow::begin() {
  if (settings_.mode) scan();
}

void ScannerWindow::scan() {
  start_->showMessage({});
  if (stage_->showsScreen() || !prepareCamera()) return;
  Platform platform = platform_;
  platform.stage = stage_;
  const auto screen =
      std::make_shared<OCRScannerViewController>(start_->mode(), settings_.showsModeSwitch, sdk_, platform);
  screen->delegate = listener_;
  screen_ = screen;
  stage_->present(screen, true, {});
}

bool ScannerWindow::prepareCamera() {
  if (bringsCamera_) return true;
  const std::string camera = start_->camera();
  const VideoSource source = videoSourceNamed(camera);
  const std::string problem = camera.empty() ? text(Text::noCamera).toStdString() : problemWith(source);
  // A camera that is there and may not be used is the scanner's own to tell of.
  std::error_code error;
  const bool isForbidden = source.isCamera && std::filesystem::exists(source.path, error) && !mayBeOpened(source);
  if (!problem.empty() && !isForbidden) {
    showFailure(QString::fromStdString(ownText(problem, languageInUse())));
    return false;
  }
  useCamera(
      platform_,
      {.camera = camera, .loops = settings_.loops, .onCameraEnd = [window = QPointer(this)](const std::string& reason) {
         if (window) window->cameraEnded(reason);
       }});
  return true;
}

void ScannerWindow::cameraEnded(const std::string& reason) {
  if (!stage_->showsScreen()) return;
  stage_->presentAlert(
      {.title = text(Text::cameraEnded).toStdString(),
       .message = ownText(reason, languageInUse()),
       .actions = {{text(Text::ok).toStdString(), Alert::ActionStyle::cancel, [this] { stage_->press("xmark"); }}}});
}

void ScannerWindow::askForPhoto() {
  stage_->pickPhoto([dispatch = platform_.dispatch, window = QPointer(this)](const std::optional<Image>& photo) {
    if (photo)
      dispatch->async([window, photo] {
        if (window) window->recognizePhoto(photo);
      });
  });
}

void ScannerWindow::readPhoto(const QString& path) {
  if (stage_->pickPhoto(path)) return;
  stage_->loadPhoto(path, [dispatch = platform_.dispatch, window = QPointer(this)](const std::optional<Image>& photo) {
    dispatch->async([window, photo] {
      if (window) window->recognizePhoto(photo);
    });
  });
}

void ScannerWindow::recognizePhoto(const std::optional<Image>& photo) {
  if (!photo) return showFailure(told(answerOf(OCRError::invalidImage())));
  setCurrentWidget(start_);
  start_->showMessage(text(Text::reading));
  start_->setBusy(true);
  sdk_.read(*photo, start_->mode(), [window = QPointer(this), photo](const Reading& reading) {
    if (!window) return;
    window->start_->setBusy(false);
    window->heard({reading.record, photo}, reading.report);
  });
}

void ScannerWindow::heard(const ScannerReport& report, const ReadingReport& reading) {
  if (report.record) return showRecord(describe(*report.record, reading, report.capturedImage));
  const OCRError& error = report.record.error();
  // The screen stays and asks for the permission; its cancellation is the end.
  if (error.kind() == OCRError::Case::cameraPermissionDenied) return;
  showFailure(error == OCRError::cancelled() ? QString() : told(readingAnswer({report.record, reading})));
}

void ScannerWindow::showRecord(const ScannedRecord& record) {
  start_->showMessage({});
  result_->show(record);
  setCurrentWidget(result_);
  if (onRecord) onRecord(record);
}

void ScannerWindow::showFailure(const QString& message) {
  setCurrentWidget(start_);
  start_->showMessage(message);
  if (onNothing) onNothing();
}

void ScannerWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!droppedFile(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void ScannerWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  readPhoto(droppedFile(*event->mimeData()));
}

}  // namespace pravik::scanner
