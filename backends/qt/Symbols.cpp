#include "backends/qt/Symbols.h"

#include <QPainterPath>
#include <QPen>
#include <algorithm>
#include <array>

namespace pravik {
namespace {

constexpr double side = 24;

QPen linePen(const QPainter& painter, double width) {
  return {painter.pen().color(), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void drawCross(QPainter& painter) {
  painter.setPen(linePen(painter, 2.2));
  painter.drawLine(QPointF(5.5, 5.5), QPointF(18.5, 18.5));
  painter.drawLine(QPointF(18.5, 5.5), QPointF(5.5, 18.5));
}

void drawCamera(QPainter& painter) {
  QPainterPath body;
  body.addRoundedRect(QRectF(2, 6.5, 20, 13.5), 2.5, 2.5);
  QPainterPath finder;
  finder.addRoundedRect(QRectF(8, 4, 8, 5), 1.5, 1.5);
  QPainterPath lens;
  lens.addEllipse(QPointF(12, 13), 4.6, 4.6);
  QPainterPath glass;
  glass.addEllipse(QPointF(12, 13), 3.1, 3.1);
  painter.fillPath(body.united(finder).subtracted(lens).united(glass), painter.pen().color());
}

void drawPhoto(QPainter& painter) {
  painter.setPen(linePen(painter, 1.8));
  painter.drawRoundedRect(QRectF(2.5, 4.5, 19, 15), 2.5, 2.5);
  QPainterPath mountains(QPointF(3, 17.5));
  mountains.lineTo(8.5, 12);
  mountains.lineTo(12.5, 16);
  mountains.lineTo(16, 12.5);
  mountains.lineTo(21, 17);
  painter.drawPath(mountains);
  QPainterPath sun;
  sun.addEllipse(QPointF(15.5, 8.8), 1.7, 1.7);
  painter.fillPath(sun, painter.pen().color());
}

QPainterPath flashlight() {
  QPainterPath path;
  path.addRoundedRect(QRectF(7, 2, 10, 3.4), 1, 1);
  QPainterPath handle(QPointF(7, 6.6));
  handle.lineTo(17, 6.6);
  handle.lineTo(15, 10.4);
  handle.lineTo(15, 20.5);
  handle.quadTo(15, 22, 13.5, 22);
  handle.lineTo(10.5, 22);
  handle.quadTo(9, 22, 9, 20.5);
  handle.lineTo(9, 10.4);
  handle.closeSubpath();
  QPainterPath knob;
  knob.addRoundedRect(QRectF(11.1, 11.5, 1.8, 4), 0.9, 0.9);
  return path.united(handle).subtracted(knob);
}

void drawLitFlashlight(QPainter& painter) {
  painter.fillPath(flashlight(), painter.pen().color());
}

void drawDarkFlashlight(QPainter& painter) {
  QPainterPath slash(QPointF(4.5, 3.5));
  slash.lineTo(19.5, 21.5);
  QPainterPathStroker gap;
  gap.setWidth(5);
  painter.fillPath(flashlight().subtracted(gap.createStroke(slash)), painter.pen().color());
  painter.setPen(linePen(painter, 1.8));
  painter.drawPath(slash);
}

constexpr std::array<Symbol, 5> symbols{{
    {"xmark", Qt::Key_Escape, "关闭", "Close", drawCross},
    {"photo", Qt::Key_O, "相册", "Open a photo", drawPhoto},
    {"camera.fill", Qt::Key_Space, "拍照", "Take the photo", drawCamera},
    {"flashlight.off.fill", Qt::Key_T, "打开手电筒", "Torch on", drawDarkFlashlight},
    {"flashlight.on.fill", Qt::Key_T, "关闭手电筒", "Torch off", drawLitFlashlight},
}};

}  // namespace

const Symbol* findSymbol(std::string_view name) {
  const auto* found = std::ranges::find(symbols, name, &Symbol::name);
  return found == symbols.end() ? nullptr : found;
}

void drawSymbol(QPainter& painter, const Symbol& symbol, const QRectF& square, const QColor& color) {
  painter.save();
  painter.translate(square.topLeft());
  painter.scale(square.width() / side, square.height() / side);
  painter.setPen(color);
  painter.setBrush(Qt::NoBrush);
  symbol.draw(painter);
  painter.restore();
}

}  // namespace pravik
