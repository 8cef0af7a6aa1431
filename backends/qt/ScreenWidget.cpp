#include "backends/qt/ScreenWidget.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStringList>
#include <algorithm>
#include <chrono>

#include "Platform/Controls.h"
#include "backends/qt/QtValues.h"
#include "backends/qt/Symbols.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;

/// About sixty a second.
constexpr std::chrono::milliseconds refreshInterval = 16ms;
constexpr std::chrono::milliseconds slideDuration = 300ms;

/// From this width over height on, a screen lays itself out for a wide view; beyond the ratio of most cameras it
/// would show less of the picture's height.
constexpr double wideRatio = 1.5;
constexpr double widestRatio = 16.0 / 9;

/// A scanner's square begins at three tenths of the height, is so much of the width wide, and needs this many points
/// below it for its labels and buttons.
constexpr double squareTop = 0.3;
constexpr double squareShare = 0.72;
constexpr double heightBelowSquare = 160;
constexpr int leastWidth = 240;

int shownWidth(QSize window) {
  if (window.width() >= wideRatio * window.height())
    return std::min(window.width(), static_cast<int>(widestRatio * window.height()));
  const double room = (1 - squareTop) * window.height() - heightBelowSquare;
  return std::min(window.width(), std::max(leastWidth, static_cast<int>(room / squareShare)));
}

Button* findButton(const View& view, const std::function<bool(const Button&)>& matches) {
  for (const auto& child : view.subviews()) {
    if (auto* button = dynamic_cast<Button*>(child.get()); button != nullptr && matches(*button)) return button;
    if (Button* found = findButton(*child, matches)) return found;
  }
  return nullptr;
}

void collectTexts(const View& view, QStringList& texts) {
  if (view.isHidden || view.alpha <= 0) return;
  if (const auto* label = dynamic_cast<const Label*>(&view); label != nullptr && !label->text.empty())
    texts << shownText(label->text);
  for (const auto& child : view.subviews()) collectTexts(*child, texts);
}

/// Several keys mean the same.
Qt::Key meaning(int key) {
  if (key == Qt::Key_Back) return Qt::Key_Escape;
  return static_cast<Qt::Key>(key);
}

bool press(Button* button) {
  if (button == nullptr || !button->onTap) return false;
  // The tap may take the button away.
  const auto tapped = button->onTap;
  tapped();
  return true;
}

}  // namespace

ScreenWidget::ScreenWidget(QWidget& host, std::shared_ptr<Screen> screen, ViewAnimator& animator)
    : QWidget(&host), screen_(std::move(screen)), animator_(animator), painter_(animator), slide_(this, "pos") {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::StrongFocus);
  hide();
  setGeometry(host.rect());
  host.installEventFilter(this);
  refreshTimer_.setTimerType(Qt::PreciseTimer);
  connect(&refreshTimer_, &QTimer::timeout, this, &ScreenWidget::refresh);
  slide_.setDuration(slideDuration.count());
  slide_.setEasingCurve(QEasingCurve::OutCubic);
}

void ScreenWidget::appear(bool animated, const std::function<void()>& arrived) {
  layOut();
  screen_->viewDidLoad();
  isLoaded_ = true;
  screen_->viewDidLayoutSubviews();
  isAway_ = false;
  screen_->viewWillAppear();
  raise();
  show();
  setFocus();
  slide(animated ? parentWidget()->height() : 0, 0, arrived);
}

void ScreenWidget::disappear(bool animated, const std::function<void()>& gone) {
  goAway();
  slide(pos().y(), animated && isVisible() ? parentWidget()->height() : pos().y(), gone);
}

void ScreenWidget::goAway() {
  if (isAway_) return;
  isAway_ = true;
  screen_->viewWillDisappear();
}

void ScreenWidget::slide(int fromY, int toY, const std::function<void()>& arrived) {
  slide_.stop();
  disconnect(&slide_, nullptr, this, nullptr);
  if (fromY == toY) {
    if (arrived) QTimer::singleShot(0, this, arrived);
    return;
  }
  move(0, fromY);
  slide_.setStartValue(QPoint(0, fromY));
  slide_.setEndValue(QPoint(0, toY));
  if (arrived) connect(&slide_, &QPropertyAnimation::finished, this, arrived);
  slide_.start();
}

bool ScreenWidget::press(std::string_view symbol) {
  return pravik::press(findButton(screen_->view(), [&](const Button& button) { return button.icon == symbol; }));
}

bool ScreenWidget::eventFilter(QObject* watched, QEvent* event) {
  if (watched == parentWidget() && event->type() == QEvent::Resize) resize(parentWidget()->size());
  return QWidget::eventFilter(watched, event);
}

void ScreenWidget::resizeEvent(QResizeEvent* /*event*/) {
  // A window that is shown tells its size once more.
  if (size() == laidOutSize_ || !isLoaded_) return;
  layOut();
  screen_->viewDidLayoutSubviews();
  refresh();
}

void ScreenWidget::layOut() {
  laidOutSize_ = size();
  const int screenWidth = shownWidth(size());
  origin_ = {(width() - screenWidth) / 2, 0};
  screen_->view().frame = {0, 0, static_cast<double>(screenWidth), static_cast<double>(height())};
}

void ScreenWidget::showEvent(QShowEvent* /*event*/) {
  refreshTimer_.start(refreshInterval);
}

void ScreenWidget::refresh() {
  if (!isVisible()) return;
  animator_.advance(ViewAnimator::Clock::now());
  refreshTouchTargets();
  refreshDescription();
  update();
}

void ScreenWidget::refreshTouchTargets() {
  const std::vector<TouchArea> areas = touchAreas(screen_->view());
  while (touchTargets_.size() < areas.size()) {
    auto* target = new TouchTarget(this);
    connect(target, &QAbstractButton::clicked, this, [this, index = touchTargets_.size()] {
      const std::vector<TouchArea> now = touchAreas(screen_->view());
      if (index < now.size()) screen_->view().touch({now[index].frame.midX(), now[index].frame.midY()});
    });
    touchTargets_.push_back(target);
  }
  for (std::size_t i = 0; i < touchTargets_.size(); ++i) {
    if (i < areas.size())
      touchTargets_[i]->place(areas[i], origin_);
    else
      touchTargets_[i]->hide();
  }
}

void ScreenWidget::refreshDescription() {
  QStringList texts;
  collectTexts(screen_->view(), texts);
  const QString description = texts.join(QStringLiteral("\n"));
  if (description != accessibleDescription()) setAccessibleDescription(description);
}

void ScreenWidget::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), Qt::black);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(origin_);
  painter_.paint(painter, screen_->view(), pressed_);
}

Point ScreenWidget::toScreen(const QPointF& point) const {
  return {point.x() - origin_.x(), point.y() - origin_.y()};
}

void ScreenWidget::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) pressed_ = screen_->view().hitTest(toScreen(event->position()));
}

void ScreenWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const Point point = toScreen(event->position());
  const View* pressed = std::exchange(pressed_, nullptr);
  if (pressed != nullptr && screen_->view().hitTest(point) == pressed) screen_->view().touch(point);
}

void ScreenWidget::keyPressEvent(QKeyEvent* event) {
  const auto matches = [key = meaning(event->key())](const Button& button) {
    const Symbol* symbol = findSymbol(button.icon);
    return symbol != nullptr && symbol->key == key;
  };
  if (event->isAutoRepeat() || !pravik::press(findButton(screen_->view(), matches))) QWidget::keyPressEvent(event);
}

}  // namespace pravik
