#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <stdexcept>
#include <string>
#include <vector>

// Small video files to scan.
namespace pravik::test {

/// A plain frame.
inline cv::Mat plainFrame(int brightness, cv::Size size = {64, 48}) {
  return {size, CV_8UC3, cv::Scalar::all(brightness)};
}

/// A folder of its own for videos, which goes with the test.
class VideoFolder {
 public:
  explicit VideoFolder(const std::string& name)
      : path_(std::filesystem::temp_directory_path() / ("pravik-" + name + "-" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~VideoFolder() { std::filesystem::remove_all(path_); }
  VideoFolder(const VideoFolder&) = delete;
  VideoFolder& operator=(const VideoFolder&) = delete;
  VideoFolder(VideoFolder&&) = delete;
  VideoFolder& operator=(VideoFolder&&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// A file of any content.
  std::string file(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return (path_ / name).string();
  }

  /// A video of these frames, all of one size and one number of channels, as motion JPEG.
  std::string video(const std::string& name, const std::vector<cv::Mat>& frames, double rate = 10,
                    cv::Size size = {64, 48}) const {
    const std::string path = (path_ / name).string();
    if (!frames.empty()) size = frames.front().size();
    const bool hasColour = frames.empty() || frames.front().channels() == 3;
    cv::VideoWriter writer(path, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), rate, size,
                           hasColour);
    if (!writer.isOpened()) throw std::runtime_error("no video can be written to " + path);
    for (const cv::Mat& frame : frames) writer.write(frame);
    return path;
  }

  /// A video whose frames may be of several sizes: JPEG pictures one after the other.
  std::string motionJpeg(const std::string& name, const std::vector<cv::Mat>& frames) const {
    std::string content;
    for (const cv::Mat& frame : frames) {
      std::vector<unsigned char> picture;
      cv::imencode(".jpg", frame, picture);
      content.append(picture.begin(), picture.end());
    }
    return file(name, content);
  }

 private:
  std::filesystem::path path_;
};

/// A file cut off after a part of its bytes.
inline void truncateFile(const std::string& path, double part) {
  std::filesystem::resize_file(
      path, static_cast<std::uintmax_t>(static_cast<double>(std::filesystem::file_size(path)) * part));
}

}  // namespace pravik::test
