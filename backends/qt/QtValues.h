#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <string>
#include <string_view>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"
#include "Platform/View.h"

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

/// A text in Chinese for users whose language that is, in English for all others.
QString inUserLanguage(std::string_view chinese, std::string_view english);

/// What a screen says, as it is shown: what a QTranslator of the application gives for it in the context "Pravik", or
/// as it is.
QString shownText(const std::string& text);

/// The application's typeface, with Chinese faces behind it.
QFont interfaceFont();
QFont toQt(const Font& font);

/// A picture that shares the bitmap's pixels and keeps them alive.
QImage toQt(const Bitmap& bitmap);

}  // namespace pravik
