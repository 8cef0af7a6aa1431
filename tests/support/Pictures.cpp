#include "support/Pictures.h"

namespace pravik::test {

Bitmap plainPicture(int width, int height, std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
  auto pixels = allocatePixels(PixelFormat::bgra8, width, height);
  const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(width) * height;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    std::uint8_t* pixel = pixels.get() + 4 * i;
    pixel[0] = blue;
    pixel[1] = green;
    pixel[2] = red;
    pixel[3] = 255;
  }
  return {PixelFormat::bgra8, width, height, std::ptrdiff_t{4} * width, pixels};
}

}  // namespace pravik::test
