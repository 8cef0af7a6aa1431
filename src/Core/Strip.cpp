#include "Core/Strip.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pravik {
namespace {

/// A strip is never longer than this, whatever its shape.
constexpr double maximumLength = 4096;

/// Adds the pixel at a place between pixels to the sums of the channels.
void addSample(const Bitmap& picture, double x, double y, int channels, std::array<float, 4>& sums) {
  x = std::clamp(x, 0.0, picture.width() - 1.0);
  y = std::clamp(y, 0.0, picture.height() - 1.0);
  const int left = static_cast<int>(x);
  const int top = static_cast<int>(y);
  const int right = std::min(left + 1, picture.width() - 1);
  const auto shareX = static_cast<float>(x - left);
  const auto shareY = static_cast<float>(y - top);
  const std::uint8_t* upper = picture.row(top);
  const std::uint8_t* lower = picture.row(std::min(top + 1, picture.height() - 1));
  for (int channel = 0; channel < channels; ++channel) {
    const auto at = [&](const std::uint8_t* row, int column) {
      return static_cast<float>(row[column * channels + channel]);
    };
    const float above = at(upper, left) + shareX * (at(upper, right) - at(upper, left));
    const float below = at(lower, left) + shareX * (at(lower, right) - at(lower, left));
    sums[static_cast<std::size_t>(channel)] += above + shareY * (below - above);
  }
}

}  // namespace

Bitmap cutStrip(const Bitmap& picture, const Strip& strip, int height, double stretch) {
  const double scale = strip.height / height;
  const double length = std::clamp(std::round(strip.length / scale * stretch), 1.0, maximumLength);
  const int width = static_cast<int>(length);
  const double scaleX = strip.length / length;
  // So many samples across and down a pixel that no pixel of the picture is passed over.
  const int across = std::max(1, static_cast<int>(std::ceil(scaleX)));
  const int down = std::max(1, static_cast<int>(std::ceil(scale)));
  const double run = 1 / std::hypot(1.0, strip.slope);
  const double rise = strip.slope * run;
  const int channels = bytesPerPixel(picture.format());
  const auto pixels = allocatePixels(picture.format(), width, height);
  std::uint8_t* out = pixels.get();
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x, out += channels) {
      std::array<float, 4> sums{};
      for (int j = 0; j < down; ++j)
        for (int i = 0; i < across; ++i) {
          const double along = (x + (i + 0.5) / across) * scaleX - strip.length / 2;
          const double beside = (y + (j + 0.5) / down) * scale - strip.height / 2;
          addSample(picture, strip.middle.x + along * run - beside * rise - 0.5,
                    strip.middle.y + along * rise + beside * run - 0.5, channels, sums);
        }
      for (int channel = 0; channel < channels; ++channel)
        out[channel] = static_cast<std::uint8_t>(
            std::lround(sums[static_cast<std::size_t>(channel)] / static_cast<float>(across * down)));
    }
  return Bitmap(picture.format(), width, height, std::ptrdiff_t{width} * channels, pixels);
}

}  // namespace pravik
