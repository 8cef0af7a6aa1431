#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>

namespace pravik {

/// The stored pixels of a JPEG file as BGRA; empty when it is damaged beyond reading. Small damage is passed over, and
/// unlike OpenCV's own decoder this one says nothing of it on standard error. Throws std::bad_alloc.
cv::Mat jpegPixels(std::span<const std::uint8_t> file);

}  // namespace pravik
