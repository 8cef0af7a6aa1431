#include "backends/qt/QtStage.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QFontMetricsF>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <cmath>
#include <exception>
#include <ranges>
#include <utility>

#include "Async/AnswerOnce.h"
#include "Utils/OCRLogger.h"
#include "backends/qt/QtValues.h"
#include "backends/qt/SystemSettings.h"

namespace pravik {
namespace {

using PickedPhoto = AnswerOnce<std::optional<Image>>;

/// At the latest, nothing is picked when nobody can answer any more.
std::shared_ptr<PickedPhoto> answerTo(std::function<void(std::optional<Image>)> completion) {
  return std::make_shared<PickedPhoto>([completion = std::move(completion)](Result<std::optional<Image>> photo) {
    completion(std::move(photo).value_or(std::nullopt));
  });
}

std::optional<Image> load(const ImageCodec& codec, const QString& path) {
  try {
    return codec.load(path.toStdU16String());
  } catch (const std::exception& error) {
    OCRLogger::warning([&] { return std::string("无法打开照片: ") + error.what(); });
    return std::nullopt;
  }
}

QMessageBox* makeMessageBox(const Alert& alert, QWidget* parent) {
  auto* box = new QMessageBox(parent);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIcon(QMessageBox::Information);
  box->setText(shownText(alert.title));
  box->setInformativeText(shownText(alert.message));
  return box;
}

}  // namespace

QtStage::QtStage(QWidget& host, const Platform& platform)
    : host_(&host), imageCodec_(platform.imageCodec), dispatch_(platform.dispatch) {}

QtStage::~QtStage() {
  for (const QPointer<ScreenWidget>& widget : screens_) delete widget.data();
}

void QtStage::present(std::shared_ptr<Screen> screen, bool animated, std::function<void()> completion) {
  // Without a window the screen is let go, which cancels what waits for it.
  if (!host_) return;
  auto* widget = new ScreenWidget(*host_, std::move(screen), animator_);
  screens_.emplace_back(widget);
  widget->appear(animated, completion);
}

void QtStage::dismiss(Screen& screen, bool animated, std::function<void()> completion) {
  for (const QPointer<ScreenWidget>& widget : screens_) {
    if (!widget || widget->screen().get() != &screen) continue;
    return widget->disappear(animated, [this, widget, completion = std::move(completion)] {
      widget->hide();
      std::erase(screens_, widget);
      // The completion may take the stage away, so the widget is kept by nobody but itself.
      widget->deleteLater();
      if (completion) completion();
    });
  }
  if (completion) QTimer::singleShot(0, &timers_, completion);
}

ScreenWidget* QtStage::topScreen() const {
  for (const auto& widget : std::views::reverse(screens_))
    if (widget) return widget.data();
  return nullptr;
}

void QtStage::presentAlert(Alert alert) {
  if (!host_) return;
  QWidget* parent = dialogParent();
  QMessageBox* box = makeMessageBox(alert, parent);
  std::vector<std::pair<QAbstractButton*, std::function<void()>>> answers;
  for (Alert::Action& action : alert.actions) {
    const bool cancels = action.style == Alert::ActionStyle::cancel;
    QPushButton* button =
        box->addButton(shownText(action.title), cancels ? QMessageBox::RejectRole : QMessageBox::AcceptRole);
    if (cancels) box->setEscapeButton(button);
    answers.emplace_back(button, std::move(action.handler));
  }
  QObject::connect(box, &QMessageBox::buttonClicked, parent, [box, answers](const QAbstractButton* clicked) {
    box->close();
    for (const auto& [button, handler] : answers)
      if (button == clicked && handler) handler();
  });
  box->open();
}

void QtStage::openSettings() {
  openCameraSettings(host_);
}

bool QtStage::pickPhoto(const QString& path) {
  offeredPhoto_ = path;
  const bool isTaken = press("photo");
  offeredPhoto_.clear();
  return isTaken;
}

bool QtStage::press(std::string_view symbol) {
  ScreenWidget* screen = topScreen();
  return screen != nullptr && screen->press(symbol);
}

void QtStage::loadPhoto(const QString& path, std::function<void(std::optional<Image>)> completion) const {
  const auto answer = answerTo(std::move(completion));
  if (imageCodec_ && dispatch_)
    dispatch_->asyncGlobal([codec = imageCodec_, answer, path] { answer->give(load(*codec, path)); });
}

void QtStage::pickPhoto(std::function<void(std::optional<Image>)> completion) {
  if (!offeredPhoto_.isEmpty()) return loadPhoto(std::exchange(offeredPhoto_, {}), std::move(completion));
  const auto answer = answerTo(std::move(completion));
  if (!host_) return;
  auto* dialog = new QFileDialog(dialogParent());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setNameFilter(QStringLiteral("*.jpg *.jpeg *.png *.webp *.heic *.heif *.bmp *.tif *.tiff *.pdf"));
  dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
  QObject::connect(dialog, &QFileDialog::fileSelected, &timers_, [this, answer](const QString& path) {
    loadPhoto(path, [answer](std::optional<Image> photo) { answer->give(std::move(photo)); });
  });
  dialog->open();
}

QWidget* QtStage::dialogParent() const {
  ScreenWidget* screen = topScreen();
  return screen != nullptr ? screen : host_.data();
}

WorkItem QtStage::animate(Animation animation) {
  std::vector<View*> roots;
  for (const QPointer<ScreenWidget>& widget : screens_)
    if (widget) roots.push_back(&widget->screen()->view());
  const auto now = ViewAnimator::Clock::now();
  const View* dissolved = animation.crossDissolvedView.get();
  QImage oldLook;
  animator_.advance(now);
  if (dissolved != nullptr) oldLook = painter_.picture(*dissolved, host_ ? host_->devicePixelRatioF() : 1);
  const std::uint64_t number =
      animator_.animate(roots, animation.changes, animation.duration, now, dissolved, std::move(oldLook));

  auto* end = new QTimer(&timers_);
  end->setSingleShot(true);
  end->setTimerType(Qt::PreciseTimer);
  QObject::connect(end, &QTimer::timeout, end, [end, completion = std::move(animation.completion)] {
    end->deleteLater();
    if (completion) completion();
  });
  end->start(animation.duration);
  return WorkItem([end = QPointer(end), animator = &animator_, number] {
    // The timer goes with the stage.
    if (!end) return;
    delete end.data();
    animator->cancel(number);
  });
}

Size QtStage::textSize(const std::string& text, const Font& font) const {
  const QFontMetricsF metrics(toQt(font));
  return {std::ceil(metrics.horizontalAdvance(shownText(text))), std::ceil(metrics.height())};
}

}  // namespace pravik
