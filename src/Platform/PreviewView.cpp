#include "Platform/PreviewView.h"

#include <algorithm>

namespace pravik {

Rect PreviewView::pictureRect() const {
  const std::optional<Bitmap> picture = session ? session->previewPicture() : std::nullopt;
  if (!picture || frame.width <= 0 || frame.height <= 0) return bounds();
  const double scale = std::max(frame.width / picture->width(), frame.height / picture->height());
  const Size shown{picture->width() * scale, picture->height() * scale};
  return {(frame.width - shown.width) / 2, (frame.height - shown.height) / 2, shown.width, shown.height};
}

Rect PreviewView::metadataOutputRectOfInterest(const Rect& rect) const {
  if (!session || !session->previewPicture() || frame.width <= 0 || frame.height <= 0) return {};
  const Rect picture = pictureRect();
  return {(rect.x - picture.x) / picture.width, (rect.y - picture.y) / picture.height, rect.width / picture.width,
          rect.height / picture.height};
}

}  // namespace pravik
