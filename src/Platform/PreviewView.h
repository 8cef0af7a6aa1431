#pragma once

#include <memory>

#include "Platform/CaptureSession.h"
#include "Platform/View.h"

namespace pravik {

/// Shows what a camera sees: the session's preview picture, centred, keeping its shape and filling the whole frame, so
/// that what sticks out on two sides is cut off.
class PreviewView : public View {
 public:
  /// Null shows nothing.
  std::shared_ptr<CaptureSession> session;

  /// Where the whole of the camera's picture lies in this view, cut-off sides included; the view's bounds before the
  /// first picture.
  Rect pictureRect() const;
  /// The part of the camera's picture that a rectangle of this view shows: 0...1 in both directions of the unturned
  /// picture, origin at the top left. Of no extent before the first picture.
  Rect metadataOutputRectOfInterest(const Rect& rect) const;
};

}  // namespace pravik
