#include "apps/scanner/ResultPage.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "apps/scanner/FaintText.h"
#include "apps/scanner/Texts.h"
#include "backends/qt/QtValues.h"

namespace pravik::scanner {
namespace {

using namespace std::chrono_literals;

constexpr int pictureHeight = 300;
constexpr int pageMargins = 20;
constexpr int contentWidth = 960;
constexpr int sideSpacing = 24;
constexpr int buttonHeight = 44;
/// How long a button says that it has copied.
constexpr std::chrono::milliseconds copiedDuration = 1500ms;

QPixmap pixmapOf(const std::optional<Image>& image) {
  if (!image || !image->bitmap) return {};
  return QPixmap::fromImage(toQt(uprightBitmap(*image->bitmap, image->orientation)));
}

QToolButton* makeCopyButton(const Field& field) {
  auto* button = new QToolButton;
  button->setText(text(Text::copy));
  button->setAccessibleName(text(Text::copy) + ' ' + field.label);
  QObject::connect(button, &QToolButton::clicked, button, [button, value = field.value] {
    QGuiApplication::clipboard()->setText(value);
    button->setText(text(Text::copied));
    QTimer::singleShot(copiedDuration, button, [button] { button->setText(text(Text::copy)); });
  });
  return button;
}

QToolButton* makeShowButton(const Field& field, QLabel* value) {
  auto* button = new QToolButton;
  button->setText(text(Text::show));
  button->setCheckable(true);
  button->setAccessibleName(text(Text::show) + ' ' + field.label);
  QObject::connect(button, &QToolButton::toggled, value, [button, value, field](bool isShown) {
    value->setText(isShown ? field.value : masked(field.value));
    button->setText(text(isShown ? Text::hide : Text::show));
  });
  return button;
}

}  // namespace

ResultPage::ResultPage() : scroll_(new QScrollArea), again_(new QPushButton(text(Text::scanAgain))) {
  scroll_->setWidgetResizable(true);
  scroll_->setAlignment(Qt::AlignHCenter);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  auto* back = new QPushButton(text(Text::back));
  for (QPushButton* button : {again_, back}) button->setMinimumHeight(buttonHeight);
  connect(again_, &QPushButton::clicked, this, [this] { onScanAgain(); });
  connect(back, &QPushButton::clicked, this, [this] { onBack(); });
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(back);
  buttons->addWidget(again_, 1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(pageMargins, pageMargins, pageMargins, pageMargins);
  column->addWidget(scroll_, 1);
  column->addLayout(buttons);
}

void ResultPage::show(const ScannedRecord& record) {
  pixmap_ = pixmapOf(record.picture);
  scroll_->setWidget(makeContent(record));
  arrange();
  again_->setFocus();
}

QWidget* ResultPage::makeContent(const ScannedRecord& record) {
  auto* content = new QWidget;
  content->setMaximumWidth(contentWidth);
  picture_ = new QLabel;
  picture_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  // As narrow as the window makes it.
  picture_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  picture_->setVisible(!pixmap_.isNull());
  sides_ = new QBoxLayout(QBoxLayout::TopToBottom, content);
  sides_->setContentsMargins(0, 0, 0, 0);
  sides_->setSpacing(sideSpacing);
  sides_->addWidget(picture_);
  sides_->addLayout(makeFields(record));
  return content;
}

QLayout* ResultPage::makeFields(const ScannedRecord& record) {
  auto* column = new QVBoxLayout;
  if (!record.warnings.isEmpty()) {
    auto* warnings = new QLabel("! " + record.warnings.join("\n! "));
    warnings->setWordWrap(true);
    column->addWidget(warnings);
  }
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(12);
  grid->setVerticalSpacing(10);
  grid->setColumnStretch(0, 1);
  for (const Field& field : record.fields) addRow(*grid, field);
  column->addLayout(grid);
  column->addStretch(1);
  return column;
}

void ResultPage::addRow(QGridLayout& grid, const Field& field) {
  const int row = grid.rowCount();
  auto* label = new QLabel(field.label);
  makeFaint(*label);
  auto* value = new QLabel(field.isSecret ? masked(field.value) : field.value);
  value->setTextFormat(Qt::PlainText);
  value->setWordWrap(true);
  value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  value->setAccessibleName(field.label);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(2);
  texts->addWidget(label);
  texts->addWidget(value);
  if (!field.note.isEmpty()) {
    auto* note = new QLabel(field.note);
    note->setWordWrap(true);
    texts->addWidget(note);
    value->setAccessibleDescription(field.note);
  }
  grid.addLayout(texts, row, 0);
  if (field.isSecret) grid.addWidget(makeShowButton(field, value), row, 1);
  grid.addWidget(makeCopyButton(field), row, 2);
}

void ResultPage::arrange() {
  if (pixmap_.isNull() || picture_ == nullptr) return;
  const bool isWide = width() > height();
  sides_->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  sides_->setStretch(0, isWide ? 1 : 0);
  sides_->setStretch(1, 1);
  const int room = std::min(width() - 2 * pageMargins, contentWidth);
  const double scale = devicePixelRatioF();
  const QSize space(isWide ? (room - sideSpacing) / 2 : room, pictureHeight);
  QPixmap fitted = pixmap_.scaled(space * scale, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  fitted.setDevicePixelRatio(scale);
  picture_->setPixmap(fitted);
}

}  // namespace pravik::scanner
