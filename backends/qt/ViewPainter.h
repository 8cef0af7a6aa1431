#pragma once

#include <QImage>
#include <QPainter>
#include <optional>

#include "Platform/PreviewView.h"
#include "Platform/View.h"
#include "backends/qt/ViewAnimator.h"

namespace pravik {

/// Draws trees of views.
class ViewPainter {
 public:
  explicit ViewPainter(const ViewAnimator& animator) : animator_(animator) {}

  /// Draws a view and its subviews where its frame says. `pressed`, which may be null, is drawn fainter.
  void paint(QPainter& painter, const View& view, const View* pressed = nullptr);
  /// A picture of a view alone, with so many pixels a point; its top left is that of the view.
  QImage picture(const View& view, double pixelsPerPoint);

 private:
  void paintContent(QPainter& painter, const View& view);
  void paintPreview(QPainter& painter, const PreviewView& view);
  void scalePreview(const Bitmap& bitmap, QSize size);

  const ViewAnimator& animator_;
  /// The camera's picture as it was drawn last: a screen is refreshed more often than a camera delivers.
  QImage scaledPreview_;
  /// What it was made of, held so that no other picture comes to lie in the same place.
  std::optional<Bitmap> previewPicture_;
};

}  // namespace pravik
