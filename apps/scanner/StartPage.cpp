#include "apps/scanner/StartPage.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFont>
#include <QScrollArea>
#include <QVBoxLayout>
#include <vector>

#include "Records/DocumentKind.h"
#include "apps/scanner/FaintText.h"
#include "apps/scanner/Texts.h"
#include "backends/qt/QtValues.h"

namespace pravik::scanner {
namespace {

constexpr int contentWidth = 380;
constexpr int buttonHeight = 44;
constexpr const char* choiceStyle =
    "QPushButton { border: 1px solid palette(mid); border-radius: 8px; text-align: left; padding: 0 14px; }"
    "QPushButton:checked { border: 2px solid palette(highlight); color: palette(highlight); font-weight: 600; }"
    "QPushButton:focus { text-decoration: underline; }";

/// A camera of this machine.
struct Camera {
  /// What opens it.
  QString source;
  QString name;
};

QString firstLine(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(file.readLine()).trimmed();
}

/// Empty when there is none, or when the system does not tell.
std::vector<Camera> listCameras() {
  const QDir devices(QStringLiteral("/sys/class/video4linux"));
  std::vector<Camera> cameras;
  for (const QString& device : devices.entryList({"video*"}, QDir::Dirs | QDir::System, QDir::Name)) {
    // A camera's further devices, such as that of its metadata, have an index above 0.
    if (firstLine(devices.filePath(device + "/index")) != QStringLiteral("0")) continue;
    const QString name = firstLine(devices.filePath(device + "/name"));
    cameras.push_back({"/dev/" + device, name.isEmpty() ? device : name});
  }
  return cameras;
}

QLabel* makeHeading() {
  auto* heading = new QLabel(text(Text::whatToScan));
  QFont font = heading->font();
  font.setPointSizeF(font.pointSizeF() * 1.6);
  heading->setFont(font);
  heading->setWordWrap(true);
  return heading;
}

QPushButton* makeButton(const QString& label) {
  auto* button = new QPushButton(label);
  button->setMinimumHeight(buttonHeight);
  return button;
}

}  // namespace

StartPage::StartPage(OCRScanMode mode, const std::string& camera)
    : cameras_(new QComboBox),
      start_(makeButton(text(Text::start))),
      openPhoto_(makeButton(text(Text::openPhoto))),
      message_(new QLabel) {
  fillCameras(camera);
  cameras_->setMinimumHeight(buttonHeight - 8);
  auto* cameraLabel = new QLabel(text(Text::camera));
  cameraLabel->setBuddy(cameras_);
  message_->setWordWrap(true);
  message_->setTextFormat(Qt::PlainText);
  message_->hide();
  start_->setDefault(true);
  setFocusProxy(start_);
  auto* hint = new QLabel(text(Text::dropHint));
  makeFaint(*hint);
  hint->setWordWrap(true);

  auto* column = new QVBoxLayout;
  column->setSpacing(10);
  column->addStretch(1);
  column->addWidget(makeHeading());
  column->addSpacing(6);
  column->addWidget(makeModes(mode));
  column->addSpacing(10);
  column->addWidget(cameraLabel);
  column->addWidget(cameras_);
  column->addSpacing(10);
  column->addWidget(message_);
  column->addWidget(start_);
  column->addWidget(openPhoto_);
  column->addWidget(hint, 0, Qt::AlignHCenter);
  column->addStretch(2);
  auto* content = new QWidget;
  content->setLayout(column);
  content->setMaximumWidth(contentWidth);
  auto* page = new QWidget;
  auto* row = new QHBoxLayout(page);
  row->addStretch(1);
  row->addWidget(content, 100);
  row->addStretch(1);
  // A long message needs more than a small window.
  auto* scroll = new QScrollArea;
  scroll->setWidget(page);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->addWidget(scroll);

  connect(start_, &QPushButton::clicked, this, [this] { onStart(); });
  connect(openPhoto_, &QPushButton::clicked, this, [this] { onOpenPhoto(); });
  connect(cameras_, &QComboBox::activated, this, [this](int index) {
    if (index == cameras_->count() - 1) return chooseClip();
    chosenCamera_ = index;
  });
}

QWidget* StartPage::makeModes(OCRScanMode mode) {
  auto* box = new QWidget;
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(8);
  for (const DocumentKind& kind : documentKinds()) {
    QPushButton* button = makeButton(inUserLanguage(kind.displayName, kind.englishName));
    button->setCheckable(true);
    button->setStyleSheet(choiceStyle);
    button->setChecked(kind.mode == mode);
    modes_.addButton(button, static_cast<int>(kind.mode));
    layout->addWidget(button);
  }
  return box;
}

void StartPage::fillCameras(const std::string& camera) {
  for (const Camera& found : listCameras()) cameras_->addItem(found.name, found.source);
  if (cameras_->count() == 0) cameras_->addItem(text(Text::noCamera), QString());
  cameras_->addItem(text(Text::chooseClip));
  if (!camera.empty()) addClip(QString::fromStdString(camera));
}

void StartPage::addClip(const QString& path) {
  const int last = cameras_->count() - 1;
  cameras_->insertItem(last, QFileInfo(path).fileName(), path);
  chosenCamera_ = last;
  cameras_->setCurrentIndex(last);
}

void StartPage::chooseClip() {
  cameras_->setCurrentIndex(chosenCamera_);
  auto* dialog = new QFileDialog(this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setNameFilter(QStringLiteral("*.avi *.mp4 *.mov *.mkv *.webm"));
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { addClip(path); });
  dialog->open();
}

OCRScanMode StartPage::mode() const {
  return static_cast<OCRScanMode>(modes_.checkedId());
}

std::string StartPage::camera() const {
  return cameras_->itemData(chosenCamera_).toString().toStdString();
}

void StartPage::showMessage(const QString& message) {
  message_->setText(message);
  message_->setVisible(!message.isEmpty());
}

void StartPage::setBusy(bool busy) {
  start_->setEnabled(!busy);
  openPhoto_->setEnabled(!busy);
}

}  // namespace pravik::scanner
