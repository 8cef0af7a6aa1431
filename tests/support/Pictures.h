#pragma once

#include "Platform/Bitmap.h"

namespace pravik::test {

/// A BGRA picture of one colour.
Bitmap plainPicture(int width, int height, std::uint8_t blue, std::uint8_t green, std::uint8_t red);

/// A grey picture whose pixels are made by a function of column and row.
template <class Function>
Bitmap greyPicture(int width, int height, Function pixel) {
  auto pixels = allocatePixels(PixelFormat::grey8, width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) pixels.get()[y * width + x] = static_cast<std::uint8_t>(pixel(x, y));
  return {PixelFormat::grey8, width, height, width, pixels};
}

}  // namespace pravik::test
