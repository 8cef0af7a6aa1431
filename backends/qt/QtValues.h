#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPointF>
#include <QRectF>

#include "Platform/Bitmap.h"
#include "Platform/Color.h"
#include "Platform/Font.h"
#include "Platform/Geometry.h"

// The library's values as Qt has them. One point is one device-independent pixel.
namespace pravik {

inline QColor toQt(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

inline QPointF toQt(const Point& point) {
  return {point.x, point.y};
}

inline QRectF toQt(const Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

/// The application's typeface, with Chinese faces behind it.
QFont interfaceFont();
QFont toQt(const Font& font);

/// A picture that shares the bitmap's pixels and keeps them alive.
QImage toQt(const Bitmap& bitmap);

}  // namespace pravik
