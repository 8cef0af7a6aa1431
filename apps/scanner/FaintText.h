#pragma once

#include <QPalette>
#include <QWidget>

namespace pravik::scanner {

/// Draws a widget's text less strongly than what matters more, yet legibly on light and dark ground.
inline void makeFaint(QWidget& widget) {
  QPalette palette = widget.palette();
  QColor color = palette.color(QPalette::WindowText);
  color.setAlphaF(0.65F);
  palette.setColor(QPalette::WindowText, color);
  widget.setPalette(palette);
}

}  // namespace pravik::scanner
