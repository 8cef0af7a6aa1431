#pragma once

#include "Platform/RectangleDetector.h"

namespace pravik {

/// Finds the outlines of cards by the straight edges of a picture: edges at a reduced size, lines, quadrilaterals of
/// lines, and a confidence from what lies along and beside their sides. Holds no state: one may serve all threads.
class OpenCvRectangleDetector final : public RectangleDetector {
 public:
  std::vector<RectangleObservation> detect(const Bitmap& bitmap, const RectangleRequest& request) const override;
};

}  // namespace pravik
