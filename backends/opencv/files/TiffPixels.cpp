#include "backends/opencv/files/PixelDecoders.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace pravik {
namespace {

/// A file in memory, as libtiff reads it.
struct MemoryFile {
  std::span<const std::uint8_t> bytes;
  toff_t position = 0;
};

MemoryFile& fileOf(thandle_t handle) {
  return *static_cast<MemoryFile*>(handle);
}

tmsize_t readPart(thandle_t handle, void* to, tmsize_t length) {
  MemoryFile& file = fileOf(handle);
  if (file.position >= file.bytes.size() || length <= 0) return 0;
  const auto rest = file.bytes.subspan(file.position);
  const auto part = rest.first(std::min(rest.size(), static_cast<std::size_t>(length)));
  std::ranges::copy(part, static_cast<std::uint8_t*>(to));
  file.position += part.size();
  return static_cast<tmsize_t>(part.size());
}

toff_t seek(thandle_t handle, toff_t offset, int from) {
  MemoryFile& file = fileOf(handle);
  const toff_t origin = from == SEEK_SET ? 0 : from == SEEK_CUR ? file.position : file.bytes.size();
  return file.position = origin + offset;
}

/// Takes a message for all handlers.
int keepSilent(TIFF* /*tiff*/, void* /*user*/, const char* /*module*/, const char* /*format*/, va_list /*values*/) {
  return 1;
}

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

Tiff open(MemoryFile& file) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepSilent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), keepSilent, nullptr);
  return {TIFFClientOpenExt(
              "", "rmh", &file, readPart, [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; }, seek,
              [](thandle_t) { return 0; }, [](thandle_t handle) -> toff_t { return fileOf(handle).bytes.size(); },
              nullptr, nullptr, options.get()),
          TIFFClose};
}

/// From red, green, blue and opacity, the colours multiplied with it, to opaque blue, green and red over white.
void composeOverWhite(cv::Mat& rgba) {
  cv::Mat_<cv::Vec4b> all(rgba);
  for (cv::Vec4b& pixel : all) {
    const cv::Vec4b old = pixel;
    const auto over = [&](int channel) {
      return static_cast<std::uint8_t>(std::min(255, old[channel] + 255 - old[3]));
    };
    pixel = {over(2), over(1), over(0), 255};
  }
}

}  // namespace

cv::Mat tiffPixels(std::span<const std::uint8_t> file, std::size_t directory) {
  MemoryFile memory{file};
  const Tiff tiff = open(memory);
  if (!tiff || TIFFSetSubDirectory(tiff.get(), directory) == 0) return {};
  std::array<char, 1024> reason{};
  if (TIFFRGBAImageOK(tiff.get(), reason.data()) == 0) throw std::runtime_error("pixels of this kind cannot be read");
  std::uint32_t width = 0, height = 0;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
  // libtiff itself would mirror the picture but not turn it.
  TIFFSetField(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  cv::Mat pixels(static_cast<int>(height), static_cast<int>(width), CV_8UC4);
  constexpr int stopsOnError = 1;
  if (TIFFReadRGBAImageOriented(tiff.get(), width, height, pixels.ptr<std::uint32_t>(), ORIENTATION_TOPLEFT,
                                stopsOnError) == 0)
    return {};
  composeOverWhite(pixels);
  return pixels;
}

}  // namespace pravik
