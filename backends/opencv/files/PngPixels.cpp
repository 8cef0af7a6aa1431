#include "backends/opencv/files/PixelDecoders.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <new>
#include <vector>

namespace pravik {
namespace {

/// libpng leaves a failed call by a jump; nothing with a destructor may live in a function that is jumped into.
class PngDecoder {
 public:
  explicit PngDecoder(std::span<const std::uint8_t> file) : rest_(file) {
    const auto giveUp = [](png_structp png, png_const_charp) {
      std::longjmp(*static_cast<std::jmp_buf*>(png_get_error_ptr(png)), 1);
    };
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure_, giveUp, [](png_structp, png_const_charp) {});
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ == nullptr) throw std::bad_alloc();
  }
  ~PngDecoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngDecoder(const PngDecoder&) = delete;
  PngDecoder& operator=(const PngDecoder&) = delete;

  bool begin() {
    if (setjmp(failure_) != 0) return false;
    png_set_read_fn(png_, this, [](png_structp png, png_bytep to, std::size_t length) {
      auto& rest = static_cast<PngDecoder*>(png_get_io_ptr(png))->rest_;
      if (length > rest.size()) png_error(png, "truncated");
      std::copy_n(rest.begin(), length, to);
      rest = rest.subspan(length);
    });
    png_read_info(png_, info_);
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_bgr(png_);
    png_set_add_alpha(png_, 255, PNG_FILLER_AFTER);
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return true;
  }
  cv::Size size() const {
    return {static_cast<int>(png_get_image_width(png_, info_)), static_cast<int>(png_get_image_height(png_, info_))};
  }
  bool readInto(std::vector<png_bytep>& rows) {
    if (setjmp(failure_) != 0) return false;
    png_read_image(png_, rows.data());
    return true;
  }

 private:
  std::span<const std::uint8_t> rest_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  std::jmp_buf failure_{};
};

}  // namespace

cv::Mat pngPixels(std::span<const std::uint8_t> file) {
  PngDecoder decoder(file);
  if (!decoder.begin()) return {};
  cv::Mat pixels(decoder.size(), CV_8UC4);
  std::vector<png_bytep> rows(static_cast<std::size_t>(pixels.rows));
  for (int y = 0; y < pixels.rows; ++y) rows[static_cast<std::size_t>(y)] = pixels.ptr(y);
  return decoder.readInto(rows) ? pixels : cv::Mat();
}

std::vector<std::uint8_t> pngFile(const cv::Mat& pixels) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(pixels.cols);
  image.height = static_cast<png_uint_32>(pixels.rows);
  image.format = pixels.channels() == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_BGR;
  const auto write = [&](void* file, png_alloc_size_t& size) {
    return png_image_write_to_memory(&image, file, &size, 0, pixels.data, static_cast<png_int_32>(pixels.step[0]),
                                     nullptr) != 0;
  };
  // The first time only the size is told.
  png_alloc_size_t size = 0;
  if (!write(nullptr, size)) return {};
  std::vector<std::uint8_t> file(size);
  return write(file.data(), size) ? file : std::vector<std::uint8_t>();
}

}  // namespace pravik
