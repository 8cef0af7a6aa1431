#include "Platform/PreviewView.h"

#include <algorithm>

namespace pravik {

Rect PreviewView::metadataOutputRectOfInterest(const Rect& rect) const {
  const std::optional<Bitmap> picture = session ? session->previewPicture() : std::nullopt;
  if (!picture || frame.width <= 0 || frame.height <= 0) return {};
  const double scale = std::max(frame.width / picture->width(), frame.height / picture->height());
  const double shownWidth = picture->width() * scale;
  const double shownHeight = picture->height() * scale;
  const double left = (frame.width - shownWidth) / 2;
  const double top = (frame.height - shownHeight) / 2;
  return {(rect.x - left) / shownWidth, (rect.y - top) / shownHeight, rect.width / shownWidth,
          rect.height / shownHeight};
}

}  // namespace pravik
