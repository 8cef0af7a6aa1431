#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>

namespace pravik {

/// The pixels of a PNG file as BGRA of 8 bits, not multiplied with their opacity; empty when it is damaged. Unlike
/// OpenCV's own decoder this one says nothing of it on standard error. Throws std::bad_alloc.
cv::Mat pngPixels(std::span<const std::uint8_t> file);

}  // namespace pravik
