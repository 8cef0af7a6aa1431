#include "backends/qt/ViewPainter.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <variant>

#include "Platform/Controls.h"
#include "backends/qt/QtValues.h"
#include "backends/qt/Symbols.h"

namespace pravik {
namespace {

constexpr double pressedAlpha = 0.5;
constexpr double iconSide = 24;
/// Beside a title.
constexpr double smallIconSide = 20;
constexpr double iconSpacing = 4;
constexpr double disabledAlpha = 0.35;
constexpr double segmentRadius = 8;
/// Between a row of segments and the mark of the selected one.
constexpr double segmentInset = 2;
constexpr double leastTitleScale = 0.6;
/// A label's own background reaches this far beyond its frame, which may hold no more than the text.
constexpr QMarginsF labelMargins{10, 4, 10, 4};

void paintText(QPainter& painter, const QRectF& area, const std::string& text, const Font& font, const Color& color,
               Qt::Alignment alignment = Qt::AlignCenter) {
  if (text.empty()) return;
  const QFont face = toQt(font);
  const QFontMetricsF metrics(face);
  QString line = shownText(text);
  // A frame that was fitted to the text may lack a fraction of a point.
  if (metrics.horizontalAdvance(line) > area.width() + 1) line = metrics.elidedText(line, Qt::ElideRight, area.width());
  painter.setFont(face);
  painter.setPen(toQt(color));
  painter.drawText(area, static_cast<int>(alignment) | Qt::TextDontClip | Qt::TextSingleLine, line);
}

/// A row of segments is round unless it asks for something else.
double cornerRadius(const View& view) {
  const bool isRow = dynamic_cast<const SegmentedControl*>(&view) != nullptr;
  return view.cornerRadius <= 0 && isRow ? segmentRadius : view.cornerRadius;
}

void paintBackground(QPainter& painter, QRectF area, const View& view, const ViewLook& look) {
  if (dynamic_cast<const Label*>(&view) != nullptr) area += labelMargins;
  if (look.backgroundColor.alpha <= 0) return;
  const double radius = cornerRadius(view);
  if (radius <= 0) return painter.fillRect(area, toQt(look.backgroundColor));
  painter.setPen(Qt::NoPen);
  painter.setBrush(toQt(look.backgroundColor));
  painter.drawRoundedRect(area, radius, radius);
}

void paintBorder(QPainter& painter, const QRectF& area, const View& view) {
  if (view.borderWidth <= 0 || view.borderColor.alpha <= 0) return;
  const double half = view.borderWidth / 2;
  const double radius = std::max(0.0, view.cornerRadius - half);
  painter.setPen(QPen(toQt(view.borderColor), view.borderWidth));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(area.adjusted(half, half, -half, -half), radius, radius);
}

QPainterPath painterPath(const Path& path) {
  struct Adder {
    QPainterPath& result;
    void operator()(const MoveTo& piece) const { result.moveTo(toQt(piece.point)); }
    void operator()(const LineTo& piece) const { result.lineTo(toQt(piece.point)); }
    void operator()(const RoundedRect& piece) const {
      result.addRoundedRect(toQt(piece.rect), piece.radius, piece.radius);
    }
  };
  QPainterPath result;
  result.setFillRule(Qt::OddEvenFill);
  for (const PathElement& element : path) std::visit(Adder{result}, element);
  return result;
}

void paintShape(QPainter& painter, const ShapeLayer& shape) {
  const QPainterPath path = painterPath(shape.path);
  if (shape.fillColor.alpha > 0) painter.fillPath(path, toQt(shape.fillColor));
  if (shape.strokeColor.alpha <= 0 || shape.lineWidth <= 0) return;
  painter.strokePath(path, QPen(toQt(shape.strokeColor), shape.lineWidth));
}

void paintButton(QPainter& painter, const Button& button) {
  const Symbol* symbol = findSymbol(button.icon);
  const double titleWidth = QFontMetricsF(toQt(button.font)).horizontalAdvance(shownText(button.title));
  const double side = button.title.empty() ? iconSide : smallIconSide;
  const double iconWidth = symbol == nullptr ? 0 : side + (button.title.empty() ? 0 : iconSpacing);
  double x = std::max(0.0, (button.frame.width - iconWidth - titleWidth) / 2);
  if (symbol != nullptr)
    drawSymbol(painter, *symbol, {x, (button.frame.height - side) / 2, side, side}, toQt(button.tintColor));
  x += iconWidth;
  paintText(painter, {x, 0, std::max(0.0, button.frame.width - x), button.frame.height}, button.title, button.font,
            button.tintColor, Qt::AlignLeft | Qt::AlignVCenter);
}

/// The font of a row of segments, made so small that the longest title fits into a width.
Font fitted(const SegmentedControl& control, double width) {
  Font font = control.font;
  const QFontMetricsF metrics(toQt(font));
  double longest = 1;
  for (const SegmentedControl::Segment& segment : control.segments)
    longest = std::max(longest, metrics.horizontalAdvance(shownText(segment.title)));
  font.size *= std::clamp(width / longest, leastTitleScale, 1.0);
  return font;
}

void paintSegments(QPainter& painter, const SegmentedControl& control) {
  if (control.segments.empty()) return;
  const double width = control.frame.width / static_cast<double>(control.segments.size());
  const double radius = std::max(0.0, cornerRadius(control) - segmentInset);
  for (std::size_t i = 0; i < control.segments.size(); ++i) {
    const QRectF area(static_cast<double>(i) * width, 0, width, control.frame.height);
    const bool isSelected = i == control.selectedSegment;
    if (isSelected) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(toQt(control.selectedTintColor));
      painter.drawRoundedRect(area.adjusted(segmentInset, segmentInset, -segmentInset, -segmentInset), radius, radius);
    }
    Color color = isSelected ? control.selectedTitleColor : control.titleColor;
    if (!control.segments[i].isEnabled) color.alpha *= disabledAlpha;
    const QRectF titleArea = area.adjusted(segmentInset, 0, -segmentInset, 0);
    paintText(painter, titleArea, control.segments[i].title, fitted(control, titleArea.width()), color);
  }
}

}  // namespace

void ViewPainter::paint(QPainter& painter, const View& view, const View* pressed) {
  const ViewLook look = animator_.look(view);
  const auto dissolve = animator_.dissolve(view);
  if (view.isHidden || (look.alpha <= 0 && !dissolve)) return;
  painter.save();
  const double opacity = painter.opacity();
  if (dissolve) {
    painter.setOpacity(opacity * (1 - dissolve->progress));
    painter.drawImage(QPointF(dissolve->frame.x, dissolve->frame.y), dissolve->picture);
  }
  painter.setOpacity(opacity * look.alpha * (dissolve ? dissolve->progress : 1) *
                     (&view == pressed ? pressedAlpha : 1));
  painter.translate(look.frame.x, look.frame.y);
  const QRectF area(0, 0, look.frame.width, look.frame.height);
  paintBackground(painter, area, view, look);
  paintBorder(painter, area, view);
  paintContent(painter, view);
  for (const auto& child : view.subviews()) paint(painter, *child, pressed);
  painter.restore();
}

QImage ViewPainter::picture(const View& view, double pixelsPerPoint) {
  const ViewLook look = animator_.look(view);
  QImage result(static_cast<int>(std::ceil(look.frame.width * pixelsPerPoint)),
                static_cast<int>(std::ceil(look.frame.height * pixelsPerPoint)), QImage::Format_ARGB32_Premultiplied);
  if (result.isNull()) return result;
  result.setDevicePixelRatio(pixelsPerPoint);
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(-look.frame.x, -look.frame.y);
  paint(painter, view);
  return result;
}

void ViewPainter::paintContent(QPainter& painter, const View& view) {
  const QRectF area = toQt(view.bounds());
  if (const auto* shape = dynamic_cast<const ShapeLayer*>(&view)) return paintShape(painter, *shape);
  if (const auto* button = dynamic_cast<const Button*>(&view)) return paintButton(painter, *button);
  if (const auto* control = dynamic_cast<const SegmentedControl*>(&view)) return paintSegments(painter, *control);
  if (const auto* preview = dynamic_cast<const PreviewView*>(&view)) return paintPreview(painter, *preview);
  if (const auto* label = dynamic_cast<const Label*>(&view))
    paintText(painter, area, label->text, label->font, label->textColor);
}

void ViewPainter::paintPreview(QPainter& painter, const PreviewView& view) {
  const std::optional<Bitmap> bitmap = view.session ? view.session->previewPicture() : std::nullopt;
  if (!bitmap || view.frame.width <= 0 || view.frame.height <= 0) return;
  const double pixelsPerPoint = painter.device()->devicePixelRatioF();
  const QSize size(static_cast<int>(std::lround(view.frame.width * pixelsPerPoint)),
                   static_cast<int>(std::lround(view.frame.height * pixelsPerPoint)));
  if (size.isEmpty()) return;
  if (!previewPicture_ || previewPicture_->row(0) != bitmap->row(0) || scaledPreview_.size() != size) {
    scalePreview(*bitmap, size);
    previewPicture_ = bitmap;
  }
  scaledPreview_.setDevicePixelRatio(pixelsPerPoint);
  painter.drawImage(QPointF(), scaledPreview_);
}

void ViewPainter::scalePreview(const Bitmap& bitmap, QSize size) {
  // Aspect fill: the part of the picture in the middle that has the shape of the view.
  const double scale = std::max(static_cast<double>(size.width()) / bitmap.width(),
                                static_cast<double>(size.height()) / bitmap.height());
  const QSizeF shown = QSizeF(size) / scale;
  const QRectF source((bitmap.width() - shown.width()) / 2, (bitmap.height() - shown.height()) / 2, shown.width(),
                      shown.height());
  if (scaledPreview_.size() != size) scaledPreview_ = QImage(size, QImage::Format_RGB32);
  scaledPreview_.setDevicePixelRatio(1);
  QPainter scaler(&scaledPreview_);
  scaler.setCompositionMode(QPainter::CompositionMode_Source);
  scaler.setRenderHint(QPainter::SmoothPixmapTransform);
  scaler.drawImage(QRectF(QPointF(), QSizeF(size)), toQt(bitmap), source);
}

}  // namespace pravik
