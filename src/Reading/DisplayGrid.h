#pragma once

#include "Reading/PicturePart.h"

namespace pravik {

/// How much the strongest regular grid of a part, finer than 7 pixels, stands out from print and noise: the mean
/// natural logarithm of its power over that of the waves around it. About 2 without a grid; 0 for a picture that is
/// smaller than 64 x 64 pixels.
float displayGrid(const Bitmap& picture, const PicturePart& part);

}  // namespace pravik
