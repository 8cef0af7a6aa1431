#pragma once

#include <QPointer>
#include <QPropertyAnimation>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Stage.h"
#include "backends/qt/TouchTarget.h"
#include "backends/qt/ViewAnimator.h"
#include "backends/qt/ViewPainter.h"

namespace pravik {

/// Shows a screen over the whole of another widget, draws it anew with every refresh, and hands touches and keys on.
///
/// A window at least half as wide again as high shows a wide screen. In any other window the screen is a column in the
/// middle, as wide as leaves room for everything below a square that almost fills the column.
class ScreenWidget : public QWidget {
 public:
  ScreenWidget(QWidget& host, std::shared_ptr<Screen> screen, ViewAnimator& animator);
  /// Tells the screen that it goes, unless it knows.
  ~ScreenWidget() override { goAway(); }

  const std::shared_ptr<Screen>& screen() const { return screen_; }

  /// Loads the screen, comes into view, from below when animated, and then calls `arrived`.
  void appear(bool animated, const std::function<void()>& arrived);
  /// Goes out of view and then calls `gone`, as soon as possible without an animation.
  void disappear(bool animated, const std::function<void()>& gone);

  /// Presses the button with this symbol, whether or not it is offered at the moment; false when there is none.
  bool press(std::string_view symbol);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* /*event*/) override { refreshTimer_.stop(); }
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void layOut();
  void refresh();
  void refreshTouchTargets();
  void refreshDescription();
  void slide(int fromY, int toY, const std::function<void()>& arrived);
  Point toScreen(const QPointF& point) const;
  void goAway();

  std::shared_ptr<Screen> screen_;
  ViewAnimator& animator_;
  ViewPainter painter_;
  QTimer refreshTimer_;
  QPropertyAnimation slide_;
  /// Where the screen's root view lies in this widget.
  QPoint origin_;
  /// What the screen was laid out for.
  QSize laidOutSize_;
  /// Where the mouse went down; only compared.
  const View* pressed_ = nullptr;
  std::vector<TouchTarget*> touchTargets_;
  bool isLoaded_ = false;
  bool isAway_ = true;
};

}  // namespace pravik
