#include <webp/decode.h>

#include "backends/opencv/files/PixelDecoders.h"

namespace pravik {

cv::Mat webpPixels(std::span<const std::uint8_t> file, cv::Size size) {
  cv::Mat pixels(size, CV_8UC4);
  const std::size_t bytes = pixels.total() * pixels.elemSize();
  const auto* end = WebPDecodeBGRAInto(file.data(), file.size(), pixels.data, bytes, static_cast<int>(pixels.step[0]));
  return end == nullptr ? cv::Mat() : pixels;
}

}  // namespace pravik
