#pragma once

#include <filesystem>
#include <string>

namespace pravik {

/// Where moving pictures come from: a video file, or a camera by its device file.
struct VideoSource {
  std::filesystem::path path;
  bool isCamera = false;
};

/// The source that a person names: a number is the camera of that number ("0" is /dev/video0), a device file is that
/// camera, and everything else is the path of a video file.
VideoSource videoSourceNamed(const std::string& name);

/// Why a source cannot be opened, in words, as far as that shows from outside: "no such file", "is a directory",
/// "a picture, not a video", "permission denied" and the like. Empty when nothing is wrong.
std::string problemWith(const VideoSource& source);

/// Whether a camera may be opened for reading and writing, or a file for reading.
bool mayBeOpened(const VideoSource& source);

}  // namespace pravik
