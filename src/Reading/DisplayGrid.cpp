#include "Reading/DisplayGrid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

namespace pravik {
namespace {

/// Side of the patches that are searched for a grid, in pixels; a power of two.
constexpr int patchSide = 64;
constexpr int patchesAcross = 3;
constexpr int patchesDown = 3;
/// Waves a patch; what is coarser may be print.
constexpr int coarsestGrid = 10;
/// A card seen at an angle has its grid at waves that lie so near each other; what surrounds them is held against it.
constexpr int nearby = 2;
constexpr int around = 4;
constexpr float aroundPlaces = (2 * around + 1) * (2 * around + 1) - (2 * nearby + 1) * (2 * nearby + 1);

using Wave = std::complex<float>;

/// Without the care for infinities that the operator takes.
Wave product(const Wave& a, const Wave& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// Where a place of a patch or its spectrum is kept; both go on beyond their edges.
std::size_t placeOf(int x, int y) {
  return static_cast<std::size_t>((y & (patchSide - 1)) * patchSide + (x & (patchSide - 1)));
}

/// The discrete Fourier transform of `patchSide` values that lie `step` apart (Cooley and Tukey, 1965).
void transform(Wave* values, std::ptrdiff_t step) {
  for (int i = 1, j = 0; i < patchSide; ++i) {
    int bit = patchSide >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(values[i * step], values[j * step]);
  }
  for (int length = 2; length <= patchSide; length *= 2) {
    const Wave turn = std::polar(1.0F, -2 * std::numbers::pi_v<float> / static_cast<float>(length));
    for (int start = 0; start < patchSide; start += length) {
      Wave factor = 1;
      for (int i = start; i < start + length / 2; ++i, factor = product(factor, turn)) {
        const Wave odd = product(factor, values[(i + length / 2) * step]);
        values[(i + length / 2) * step] = values[i * step] - odd;
        values[i * step] += odd;
      }
    }
  }
}

/// Adds to every wave the logarithm of its power, or of that nearby, over that around it.
void addGridPower(const Bitmap& picture, int left, int top, std::vector<float>& sums) {
  std::vector<Wave> waves(patchSide * patchSide);
  // Hann's, so that the patch's edges make no waves.
  std::array<float, patchSide> window{};
  for (std::size_t i = 0; i < window.size(); ++i)
    window[i] = 0.5F - 0.5F * std::cos(2 * std::numbers::pi_v<float> * (static_cast<float>(i) + 0.5F) / patchSide);
  for (int y = 0; y < patchSide; ++y)
    for (int x = 0; x < patchSide; ++x)
      waves[placeOf(x, y)] = static_cast<float>(colourAt(picture, {left + x + 0.5, top + y + 0.5}).luma()) *
                             window[static_cast<std::size_t>(x)] * window[static_cast<std::size_t>(y)];
  for (int i = 0; i < patchSide; ++i) transform(&waves[placeOf(0, i)], 1);
  for (int i = 0; i < patchSide; ++i) transform(&waves[placeOf(i, 0)], patchSide);
  std::vector<float> powers(waves.size());
  // JPEG codes blocks of 8 pixels, whose borders are a grid too.
  const auto isOfBlocks = [](int along, int beside) {
    return ((beside + 1) & (patchSide - 1)) <= 2 && ((along + 1) & 7) <= 2;
  };
  for (int y = 0; y < patchSide; ++y)
    for (int x = 0; x < patchSide; ++x)
      powers[placeOf(x, y)] = isOfBlocks(x, y) || isOfBlocks(y, x) ? 0 : std::norm(waves[placeOf(x, y)]);
  for (int y = 0; y < patchSide; ++y)
    for (int x = 0; x <= patchSide / 2; ++x) {
      float highest = 0;
      float others = 0;
      for (int dy = -around; dy <= around; ++dy)
        for (int dx = -around; dx <= around; ++dx) {
          const float one = powers[placeOf(x + dx, y + dy)];
          if (std::abs(dx) > nearby || std::abs(dy) > nearby)
            others += one;
          else
            highest = std::max(highest, one);
        }
      sums[placeOf(x, y)] += std::log((highest + 1) / (others / aroundPlaces + 1));
    }
}

}  // namespace

float displayGrid(const Bitmap& picture, const PicturePart& part) {
  if (picture.width() < patchSide || picture.height() < patchSide) return 0;
  std::vector<float> sums(patchSide * patchSide);
  for (int row = 0; row < patchesDown; ++row)
    for (int column = 0; column < patchesAcross; ++column) {
      const Point middle = part.at((column + 0.5) / patchesAcross, (row + 0.5) / patchesDown);
      const auto start = [](double place, int length) {
        return static_cast<int>(std::clamp(place - patchSide / 2.0, 0.0, static_cast<double>(length - patchSide)));
      };
      addGridPower(picture, start(middle.x, picture.width()), start(middle.y, picture.height()), sums);
    }
  float highest = 0;
  for (int y = -patchSide / 2; y < patchSide / 2; ++y)
    for (int x = 0; x <= patchSide / 2; ++x) {
      if (std::hypot(x, y) >= coarsestGrid) highest = std::max(highest, sums[placeOf(x, y)]);
    }
  return highest / (patchesAcross * patchesDown);
}

}  // namespace pravik
