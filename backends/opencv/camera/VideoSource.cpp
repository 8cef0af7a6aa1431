#include "backends/opencv/camera/VideoSource.h"

#include <linux/videodev2.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

#include "Utils/Text.h"
#include "backends/opencv/camera/DeviceFile.h"

namespace pravik {
namespace {

/// The numbers of device files; more digits are the name of a file.
constexpr std::size_t maximumIndexDigits = 3;

bool isIndex(const std::string& name) {
  return !name.empty() && name.size() <= maximumIndexDigits && std::ranges::all_of(name, isAsciiDigit);
}

/// How the files of still pictures begin: JPEG, PNG, BMP, TIFF in both byte orders.
constexpr std::array<std::string_view, 5> pictureSignatures{"\xFF\xD8\xFF", "\x89PNG", "BM", "II*", "MM"};
/// Where a RIFF file names its kind, and the name of the pictures among them.
constexpr std::size_t riffKindOffset = 8;
constexpr std::string_view webp = "WEBP";
/// A file of nothing but JPEG pictures, one after the other, is a video that begins like a picture.
constexpr std::array<std::string_view, 2> motionJpegExtensions{".mjpeg", ".mjpg"};

/// A video library would play a picture as a video of one frame.
bool isPicture(const std::filesystem::path& path) {
  if (std::ranges::find(motionJpegExtensions, path.extension().string()) != motionJpegExtensions.end()) return false;
  std::string start(riffKindOffset + webp.size(), '\0');
  std::ifstream(path, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
  return std::ranges::any_of(pictureSignatures, [&](std::string_view s) { return start.starts_with(s); }) ||
         start.substr(riffKindOffset) == webp;
}

std::string problemWithCamera(const VideoSource& camera) {
  std::error_code error;
  if (!std::filesystem::exists(camera.path, error)) return "no such camera";
  if (!mayBeOpened(camera)) return "permission denied; the camera's group, usually \"video\", may use it";
  const DeviceFile device(camera.path);
  v4l2_capability capability{};
  const bool captures = device.control(VIDIOC_QUERYCAP, capability) &&
                        (capability.capabilities & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
  return captures ? "" : "not a camera";
}

std::string problemWithFile(const VideoSource& file) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file.path, error);
  if (status.type() == std::filesystem::file_type::not_found) return "no such file";
  if (status.type() == std::filesystem::file_type::directory) return "is a directory";
  if (!mayBeOpened(file)) return "permission denied";
  if (status.type() != std::filesystem::file_type::regular) return "not a file";
  if (std::filesystem::file_size(file.path, error) == 0 || error) return "the file is empty";
  return isPicture(file.path) ? "a picture, not a video" : "";
}

}  // namespace

VideoSource videoSourceNamed(const std::string& name) {
  if (isIndex(name)) return {"/dev/video" + std::to_string(std::stoi(name)), true};
  std::error_code error;
  return {name, std::filesystem::is_character_file(name, error)};
}

std::string problemWith(const VideoSource& source) {
  return source.isCamera ? problemWithCamera(source) : problemWithFile(source);
}

bool mayBeOpened(const VideoSource& source) {
  return ::access(source.path.c_str(), source.isCamera ? R_OK | W_OK : R_OK) == 0;
}

}  // namespace pravik
