#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "Platform/Bitmap.h"

namespace pravik::test {

/// Corners in pixels from the top left: top left, top right, bottom right, bottom left as a person sees the card.
using CardCorners = std::array<cv::Point2d, 4>;

/// The corners of a card of the common size that lies at `middle`, `width` pixels long and turned clockwise by
/// `degrees`. The side away from the camera is shorter by the share `tilt`.
CardCorners cardAt(cv::Point2d middle, double width, double degrees, double tilt = 0);

/// A photo of a desk that things are laid on, with the noise of a camera. The same calls give the same picture.
class Desk {
 public:
  Desk(int width, int height, cv::Scalar color);

  /// A card with rounded corners, lines of print and a portrait, with a soft shadow below it.
  Desk& card(const CardCorners& corners, cv::Scalar color = {225, 215, 205});
  Desk& stripes(double pitch, double degrees, cv::Scalar color);
  /// Straight lines in all directions.
  Desk& clutter(int lines);
  /// Darkens the picture towards the right, down to the share `darkest`.
  Desk& light(double darkest);
  /// What the camera sees.
  Bitmap photo(double noise = 3) const;

 private:
  cv::Mat picture_;
};

}  // namespace pravik::test
