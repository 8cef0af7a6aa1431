#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

namespace pravik {

// The decoders and encoders of single formats. They say nothing of a damaged file on standard error. All throw
// std::bad_alloc.

/// The stored pixels of a JPEG file as BGRA; empty when it is damaged beyond reading. Small damage is passed over.
cv::Mat jpegPixels(std::span<const std::uint8_t> file);

/// The pixels of a PNG file as BGRA of 8 bits, not multiplied with their opacity; empty when it is damaged.
cv::Mat pngPixels(std::span<const std::uint8_t> file);

/// The stored pixels of the picture of a TIFF file whose directory begins at a byte as BGRA, what is transparent laid
/// over white; empty when it is damaged. Throws std::runtime_error when the pixels are of a kind that is no picture's.
cv::Mat tiffPixels(std::span<const std::uint8_t> file, std::size_t directory);

/// The pixels of a BMP file as BGRA, whose header tells this size, not multiplied with their opacity. Throws
/// std::runtime_error when the file ends before them, or they are packed in runs, as hardly any program does.
cv::Mat bmpPixels(std::span<const std::uint8_t> file, cv::Size size);

/// The stored pixels of a WebP file as BGRA, whose header tells this size, not multiplied with their opacity; empty
/// when it is damaged.
cv::Mat webpPixels(std::span<const std::uint8_t> file, cv::Size size);

/// The pixels of the main picture of a HEIC file as BGRA, upright and not multiplied with their opacity; empty when it
/// is damaged. Throws std::runtime_error when the file, or the coded picture within it, has more pixels than
/// `maximumPicturePixels`, or more than 10,000 on a side.
cv::Mat heicPixels(std::span<const std::uint8_t> file);

/// A file of BGR or grey pixels; empty when they are too many for the format. JPEG of a quality of 0 to 100.
std::vector<std::uint8_t> jpegFile(const cv::Mat& pixels, int quality);
std::vector<std::uint8_t> pngFile(const cv::Mat& pixels);

}  // namespace pravik
