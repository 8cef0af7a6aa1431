#include "backends/opencv/files/PixelDecoders.h"

// libjpeg's header wants FILE to be known.
#include <cstdio>
// Its own header comes after that.
#include <jpeglib.h>

#include <csetjmp>
#include <cstdlib>

namespace pravik {
namespace {

// libjpeg leaves a failed call by a jump; nothing with a destructor may live in a function that is jumped into.

template <class Codec>
void jumpOnFailure(Codec& codec, jpeg_error_mgr& errors, std::jmp_buf& failure) {
  codec.err = jpeg_std_error(&errors);
  codec.client_data = &failure;
  errors.error_exit = [](j_common_ptr failed) { std::longjmp(*static_cast<std::jmp_buf*>(failed->client_data), 1); };
  errors.output_message = [](j_common_ptr) {};
}

class JpegDecoder {
 public:
  JpegDecoder() { jumpOnFailure(codec_, errors_, failure_); }
  ~JpegDecoder() { jpeg_destroy_decompress(&codec_); }
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;

  bool begin(std::span<const std::uint8_t> file) {
    if (setjmp(failure_) != 0) return false;
    jpeg_create_decompress(&codec_);
    jpeg_mem_src(&codec_, file.data(), file.size());
    jpeg_read_header(&codec_, TRUE);
    codec_.out_color_space = isInk() ? JCS_CMYK : JCS_EXT_BGRA;
    jpeg_start_decompress(&codec_);
    return true;
  }
  cv::Size size() const { return {static_cast<int>(codec_.output_width), static_cast<int>(codec_.output_height)}; }
  /// Whether the channels are the inks of a print.
  bool isInk() const { return codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK; }
  /// Whether 255 is no ink, as Adobe's programs have it.
  bool isInverted() const { return codec_.saw_Adobe_marker == TRUE; }

  bool readInto(cv::Mat& pixels) {
    if (setjmp(failure_) != 0) return false;
    while (codec_.output_scanline < codec_.output_height) {
      JSAMPROW row = pixels.ptr(static_cast<int>(codec_.output_scanline));
      jpeg_read_scanlines(&codec_, &row, 1);
    }
    return true;
  }

 private:
  jpeg_decompress_struct codec_{};
  jpeg_error_mgr errors_{};
  std::jmp_buf failure_{};
};

class JpegEncoder {
 public:
  JpegEncoder() { jumpOnFailure(codec_, errors_, failure_); }
  ~JpegEncoder() {
    jpeg_destroy_compress(&codec_);
    // libjpeg's own.
    std::free(file_);  // NOLINT(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
  }
  JpegEncoder(const JpegEncoder&) = delete;
  JpegEncoder& operator=(const JpegEncoder&) = delete;

  bool write(const cv::Mat& pixels, int quality) {
    if (setjmp(failure_) != 0) return false;
    jpeg_create_compress(&codec_);
    jpeg_mem_dest(&codec_, &file_, &size_);
    codec_.image_width = static_cast<JDIMENSION>(pixels.cols);
    codec_.image_height = static_cast<JDIMENSION>(pixels.rows);
    codec_.input_components = pixels.channels();
    codec_.in_color_space = pixels.channels() == 1 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&codec_);
    jpeg_set_quality(&codec_, quality, TRUE);
    jpeg_start_compress(&codec_, TRUE);
    while (codec_.next_scanline < codec_.image_height) {
      auto* row = const_cast<JSAMPROW>(pixels.ptr(static_cast<int>(codec_.next_scanline)));
      jpeg_write_scanlines(&codec_, &row, 1);
    }
    jpeg_finish_compress(&codec_);
    return true;
  }
  std::span<const std::uint8_t> file() const { return {file_, size_}; }

 private:
  jpeg_compress_struct codec_{};
  jpeg_error_mgr errors_{};
  std::jmp_buf failure_{};
  std::uint8_t* file_ = nullptr;
  unsigned long size_ = 0;
};

/// Each of cyan, magenta and yellow takes its colour out of what black leaves.
void inksToColors(cv::Mat& pixels, bool isInverted) {
  if (!isInverted) cv::bitwise_not(pixels, pixels);
  cv::Mat_<cv::Vec4b> all(pixels);
  for (cv::Vec4b& pixel : all) {
    const cv::Vec4b inks = pixel;
    const auto light = [&](int ink) { return static_cast<std::uint8_t>((inks[ink] * inks[3] + 127) / 255); };
    pixel = {light(2), light(1), light(0), 255};
  }
}

}  // namespace

cv::Mat jpegPixels(std::span<const std::uint8_t> file) {
  JpegDecoder decoder;
  if (!decoder.begin(file)) return {};
  cv::Mat pixels(decoder.size(), CV_8UC4);
  if (!decoder.readInto(pixels)) return {};
  if (decoder.isInk()) inksToColors(pixels, decoder.isInverted());
  return pixels;
}

std::vector<std::uint8_t> jpegFile(const cv::Mat& pixels, int quality) {
  JpegEncoder encoder;
  if (!encoder.write(pixels, quality)) return {};
  return {encoder.file().begin(), encoder.file().end()};
}

}  // namespace pravik
