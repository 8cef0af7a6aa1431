#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Platform/Bitmap.h"

namespace pravik {

/// The pixels of a bitmap as a matrix of CV_8UC4 (blue, green, red, alpha) or CV_8UC1. Nothing is copied: the matrix
/// must not be written to and must not outlive the bitmap.
inline cv::Mat asMat(const Bitmap& bitmap) {
  const int type = bitmap.format() == PixelFormat::bgra8 ? CV_8UC4 : CV_8UC1;
  // cv::Mat has no view of constant pixels.
  return {bitmap.height(), bitmap.width(), type, const_cast<std::uint8_t*>(bitmap.row(0)),
          static_cast<std::size_t>(bitmap.stride())};
}

/// Pixels of one, three or four channels as BGRA; the matrix itself when it has four.
inline cv::Mat asBgra(const cv::Mat& pixels) {
  if (pixels.channels() == 4) return pixels;
  cv::Mat bgra;
  cv::cvtColor(pixels, bgra, pixels.channels() == 1 ? cv::COLOR_GRAY2BGRA : cv::COLOR_BGR2BGRA);
  return bgra;
}

/// A bitmap that shares the pixels of a CV_8UC4 or CV_8UC1 matrix, which must own them and not be written to any more.
/// Throws std::invalid_argument for another type or an empty matrix.
inline Bitmap toBitmap(const cv::Mat& mat) {
  if (mat.type() != CV_8UC4 && mat.type() != CV_8UC1) throw std::invalid_argument("a bitmap is BGRA or grey, 8 bits");
  const auto owner = std::make_shared<const cv::Mat>(mat);
  return {mat.type() == CV_8UC4 ? PixelFormat::bgra8 : PixelFormat::grey8, mat.cols, mat.rows,
          static_cast<std::ptrdiff_t>(mat.step[0]), std::shared_ptr<const std::uint8_t>(owner, owner->data)};
}

}  // namespace pravik
