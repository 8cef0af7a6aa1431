#pragma once

#include <QColor>
#include <QPainter>
#include <QString>
#include <Qt>
#include <string_view>

#include "backends/qt/QtValues.h"

namespace pravik {

/// A picture that a button can show.
struct Symbol {
  std::string_view name;
  /// The key that presses its button.
  Qt::Key key;
  /// What it means, for those who do not see it.
  const char* chinese;
  const char* english;
  /// Draws it in white, 24 points wide and high.
  void (*draw)(QPainter& painter);

  /// In the language of the user.
  QString label() const { return inUserLanguage(chinese, english); }
};

/// Null for a name that stands for no symbol.
const Symbol* findSymbol(std::string_view name);

/// Draws a symbol into a square.
void drawSymbol(QPainter& painter, const Symbol& symbol, const QRectF& square, const QColor& color);

}  // namespace pravik
