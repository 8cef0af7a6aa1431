#include "support/Pictures.h"

#include <cstring>

namespace pravik::test {

Bitmap plainPicture(int width, int height, std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
  const std::uint8_t pixel[] = {blue, green, red, 255};
  auto pixels = allocatePixels(PixelFormat::bgra8, width, height);
  const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(width) * height;
  for (std::ptrdiff_t i = 0; i < count; ++i) std::memcpy(pixels.get() + 4 * i, pixel, sizeof pixel);
  return {PixelFormat::bgra8, width, height, std::ptrdiff_t{4} * width, pixels};
}

}  // namespace pravik::test
