#pragma once

#include <vector>

#include "Platform/Bitmap.h"
#include "Platform/Geometry.h"

namespace pravik {

/// What a caller asks of a rectangle detector.
struct RectangleRequest {
  /// Most rectangles to return.
  int maximumObservations = 1;
  /// Bounds of the aspect ratio: shorter side over longer side of the quadrilateral, at most 1; a bound above 1
  /// does not limit.
  float minimumAspectRatio = 0.5F;
  float maximumAspectRatio = 1.0F;
  /// How far each corner may be from a right angle, in degrees.
  float quadratureTolerance = 30;
  /// Least extent of the rectangle's shorter side, as a fraction of the picture's shorter side.
  float minimumSize = 0.2F;
  /// Least confidence, 0 to 1.
  float minimumConfidence = 0;

  bool operator==(const RectangleRequest&) const = default;
};

/// A quadrilateral that looks like a card. Normalised to 0...1 in both directions, origin at the lower left.
struct RectangleObservation {
  Quadrilateral corners;
  /// The smallest upright rectangle around the corners.
  Rect boundingBox;
  /// From 0 to 1: how sure the detector is that this is the outline of a card.
  float confidence = 0;
};

/// Finds the outlines of cards. A call blocks; calls from several threads may overlap.
class RectangleDetector {
 public:
  virtual ~RectangleDetector() = default;

  /// The rectangles that fit the request, the most confident first. None is an empty list. Throws std::exception
  /// with a text that a user can read when it cannot work.
  virtual std::vector<RectangleObservation> detect(const Bitmap& bitmap, const RectangleRequest& request) const = 0;
};

}  // namespace pravik
