#include "backends/qt/TouchTarget.h"

#include <QPainter>
#include <QPen>

#include "Platform/Controls.h"
#include "backends/qt/QtValues.h"
#include "backends/qt/Symbols.h"

namespace pravik {
namespace {

QString nameOf(const Button& button) {
  const Symbol* symbol = findSymbol(button.icon);
  return symbol == nullptr || !button.title.empty() ? shownText(button.title) : symbol->label();
}

void addSegments(const SegmentedControl& control, Point origin, std::vector<TouchArea>& areas) {
  const double width = control.frame.width / static_cast<double>(control.segments.size());
  for (std::size_t i = 0; i < control.segments.size(); ++i)
    areas.push_back({.frame = {origin.x + width * static_cast<double>(i), origin.y, width, control.frame.height},
                     .name = shownText(control.segments[i].title),
                     .isEnabled = control.segments[i].isEnabled,
                     .isChoice = true,
                     .isChosen = i == control.selectedSegment});
}

void addAreas(const View& view, Point superOrigin, std::vector<TouchArea>& areas) {
  if (view.isHidden || view.alpha <= 0) return;
  const Point origin{superOrigin.x + view.frame.x, superOrigin.y + view.frame.y};
  if (const auto* button = dynamic_cast<const Button*>(&view))
    areas.push_back({.frame = {origin.x, origin.y, view.frame.width, view.frame.height}, .name = nameOf(*button)});
  if (const auto* control = dynamic_cast<const SegmentedControl*>(&view)) addSegments(*control, origin, areas);
  for (const auto& child : view.subviews()) addAreas(*child, origin, areas);
}

}  // namespace

std::vector<TouchArea> touchAreas(const View& root) {
  std::vector<TouchArea> areas;
  addAreas(root, {-root.frame.x, -root.frame.y}, areas);
  return areas;
}

TouchTarget::TouchTarget(QWidget* parent) : QAbstractButton(parent) {
  // The mouse goes to the tree itself.
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFocusPolicy(Qt::TabFocus);
}

void TouchTarget::place(const TouchArea& area, QPoint origin) {
  const QRect target = toQt(area.frame).toAlignedRect().translated(origin);
  if (geometry() != target) setGeometry(target);
  if (accessibleName() != area.name) setAccessibleName(area.name);
  if (isEnabled() != area.isEnabled) setEnabled(area.isEnabled);
  if (isCheckable() != area.isChoice) setCheckable(area.isChoice);
  if (isChecked() != area.isChosen) setChecked(area.isChosen);
  if (isHidden()) setVisible(true);
}

void TouchTarget::paintEvent(QPaintEvent* /*event*/) {
  if (!hasFocus()) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::white, 2));
  painter.drawRoundedRect(QRectF(rect()).adjusted(2, 2, -2, -2), 6, 6);
}

}  // namespace pravik
