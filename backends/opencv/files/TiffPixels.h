#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>

namespace pravik {

/// The stored pixels of the first picture of a TIFF file as BGRA, what is transparent laid over white; empty when it is
/// damaged. Unlike OpenCV's own decoder this one says nothing of it on standard error. Throws std::runtime_error when
/// the pixels are of a kind that is no picture's, and std::bad_alloc.
cv::Mat tiffPixels(std::span<const std::uint8_t> file);

}  // namespace pravik
