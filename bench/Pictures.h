#pragma once

#include "Platform/Bitmap.h"

namespace pravik::bench {

/// A photographed portrait side from samples/, scaled to about this many million pixels of shape 4 : 3.
Bitmap photoOfMegapixels(int megapixels);
/// The same photo at exactly this size.
Bitmap photoOfSize(int width, int height);
/// A photographed bank card from samples/ as it is.
Bitmap bankCardPhoto();

}  // namespace pravik::bench
