#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <span>

namespace pravik {

// The decoders of single formats. Unlike OpenCV's own they say nothing of a damaged file on standard error. All throw
// std::bad_alloc.

/// The stored pixels of a JPEG file as BGRA; empty when it is damaged beyond reading. Small damage is passed over.
cv::Mat jpegPixels(std::span<const std::uint8_t> file);

/// The pixels of a PNG file as BGRA of 8 bits, not multiplied with their opacity; empty when it is damaged.
cv::Mat pngPixels(std::span<const std::uint8_t> file);

/// The stored pixels of the picture of a TIFF file whose directory begins at a byte as BGRA, what is transparent laid
/// over white; empty when it is damaged. Throws std::runtime_error when the pixels are of a kind that is no picture's.
cv::Mat tiffPixels(std::span<const std::uint8_t> file, std::size_t directory);

/// The pixels of the main picture of a HEIC file as BGRA, upright and not multiplied with their opacity; empty when it
/// is damaged. Throws std::runtime_error when the file, or the coded picture within it, has more pixels than
/// `maximumPicturePixels`, or more than 10,000 on a side.
cv::Mat heicPixels(std::span<const std::uint8_t> file);

}  // namespace pravik
