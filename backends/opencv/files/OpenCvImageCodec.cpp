#include "backends/opencv/files/OpenCvImageCodec.h"

#include <cerrno>
#include <fstream>
#include <memory>
#include <mutex>
#include <new>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "backends/opencv/Mat.h"
#include "backends/opencv/files/PdfPages.h"
#include "backends/opencv/files/PictureHeader.h"
#include "backends/opencv/files/PixelDecoders.h"

namespace pravik {
namespace {

constexpr int jpegQuality = 92;

/// OpenCV writes its warnings to standard error, which belongs to the program.
void silenceOpenCv() {
  static std::once_flag once;
  std::call_once(once, [] { cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT); });
}

void requireSize(std::uintmax_t bytes) {
  if (bytes == 0) throw std::runtime_error("the file is empty");
  if (bytes > maximumPictureFileBytes)
    throw std::runtime_error("too large: " + std::to_string(bytes >> 20U) + " MiB, at most " +
                             std::to_string(maximumPictureFileBytes >> 20U) + " MiB");
}

cv::Mat decodePixels(std::span<const std::uint8_t> file, PictureFormat format, cv::Size size) {
  switch (format) {
    case PictureFormat::jpeg:
      return jpegPixels(file);
    case PictureFormat::png:
      return pngPixels(file);
    case PictureFormat::webp:
      return webpPixels(file, size);
    default:
      return bmpPixels(file, size);
  }
}

/// Lays what is transparent over white and leaves every pixel opaque.
void composeOverWhite(cv::Mat& bgra) {
  for (int y = 0; y < bgra.rows; ++y) {
    std::uint8_t* pixel = bgra.ptr(y);
    for (int x = 0; x < bgra.cols; ++x, pixel += 4) {
      const int alpha = pixel[3];
      if (alpha == 255) continue;
      for (int c = 0; c < 3; ++c)
        pixel[c] = static_cast<std::uint8_t>((pixel[c] * alpha + 255 * (255 - alpha) + 127) / 255);
      pixel[3] = 255;
    }
  }
}

/// The picture whose pixels are decoded, upright.
template <class Decode>
Image uprightImage(ImageOrientation orientation, const Decode& decode) {
  try {
    cv::Mat bgra = decode();
    if (bgra.empty()) throw std::runtime_error("the picture is damaged");
    composeOverWhite(bgra);
    return {.bitmap = uprightBitmap(toBitmap(bgra), orientation)};
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) throw std::bad_alloc();
    throw std::runtime_error("the picture is damaged");
  }
}

using FileBytes = std::shared_ptr<const std::vector<std::uint8_t>>;

PictureFile singlePicture(const FileBytes& file, PictureFormat format) {
  return {1, [file, format](int /*page*/) {
            if (format == PictureFormat::heic)
              return uprightImage(ImageOrientation::up, [&] { return heicPixels(*file); });
            const PictureHeader header = readPictureHeader(*file, format);
            const cv::Size size(static_cast<int>(header.width), static_cast<int>(header.height));
            return uprightImage(header.orientation, [&] { return decodePixels(*file, format, size); });
          }};
}

PictureFile tiffPages(const FileBytes& file) {
  const std::vector<std::size_t> directories = tiffDirectories(*file);
  return {static_cast<int>(directories.size()), [file, directories](int page) {
            const std::size_t directory = directories.at(static_cast<std::size_t>(page));
            const PictureHeader header = readTiffHeader(*file, directory);
            return uprightImage(header.orientation, [&] { return tiffPixels(*file, directory); });
          }};
}

std::vector<std::uint8_t> readFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) throw std::runtime_error("no such file");
  if (error) throw std::runtime_error("cannot be read: " + error.message());
  if (std::filesystem::is_directory(status)) throw std::runtime_error("is a directory");
  // Opening a pipe or a device may wait for ever.
  if (!std::filesystem::is_regular_file(status)) throw std::runtime_error("not a regular file");
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) throw std::runtime_error("cannot be read: " + error.message());
  requireSize(size);

  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot be read: " + std::generic_category().message(errno));
  std::vector<std::uint8_t> bytes(size);
  stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  if (!stream) throw std::runtime_error("cannot be read: the file became shorter");
  return bytes;
}

}  // namespace

PictureFile OpenCvImageCodec::open(std::vector<std::uint8_t> file) const {
  silenceOpenCv();
  requireSize(file.size());
  const PictureFormat format = formatOf(file);
  if (format == PictureFormat::pdf) return pdfPages(file);
  const auto bytes = std::make_shared<const std::vector<std::uint8_t>>(std::move(file));
  return format == PictureFormat::tiff ? tiffPages(bytes) : singlePicture(bytes, format);
}

PictureFile OpenCvImageCodec::open(const std::filesystem::path& path) const {
  return open(readFile(path));
}

std::vector<std::uint8_t> OpenCvImageCodec::encode(const Bitmap& bitmap, ImageFileFormat format) const {
  silenceOpenCv();
  cv::Mat pixels = asMat(bitmap);
  if (bitmap.format() == PixelFormat::bgra8) cv::cvtColor(pixels, pixels, cv::COLOR_BGRA2BGR);
  std::vector<std::uint8_t> file = format == ImageFileFormat::png ? pngFile(pixels) : jpegFile(pixels, jpegQuality);
  if (!file.empty()) return file;
  throw std::runtime_error("a picture of " + std::to_string(bitmap.width()) + " x " + std::to_string(bitmap.height()) +
                           " pixels cannot be written in this format");
}

}  // namespace pravik
