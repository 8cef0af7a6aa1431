#include "backends/qt/QtValues.h"

#include <QApplication>
#include <QLocale>
#include <cmath>
#include <memory>

namespace pravik {

QString inUserLanguage(std::string_view chinese, std::string_view english) {
  const std::string_view text = QLocale().language() == QLocale::Chinese ? chinese : english;
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString shownText(const std::string& text) {
  return QCoreApplication::translate("Pravik", text.c_str());
}

QFont interfaceFont() {
  QFont result = QApplication::font();
  // Without a face named, a system whose language is not Chinese may show the Japanese forms of characters.
  result.setFamilies({result.family(), "Noto Sans CJK SC", "WenQuanYi Zen Hei"});
  return result;
}

QFont toQt(const Font& font) {
  QFont result = interfaceFont();
  result.setPixelSize(static_cast<int>(std::lround(font.size)));
  result.setWeight(font.isBold ? QFont::DemiBold : QFont::Normal);
  return result;
}

QImage toQt(const Bitmap& bitmap) {
  const auto format = bitmap.format() == PixelFormat::bgra8 ? QImage::Format_RGB32 : QImage::Format_Grayscale8;
  auto keeper = std::make_unique<Bitmap>(bitmap);
  return {bitmap.row(0),   bitmap.width(),
          bitmap.height(), static_cast<qsizetype>(bitmap.stride()),
          format,          [](void* kept) { std::unique_ptr<Bitmap>(static_cast<Bitmap*>(kept)); },
          keeper.release()};
}

}  // namespace pravik
