#pragma once

#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <stdexcept>
#include <vector>

#include "support/TemporaryFolder.h"

// Small video files to scan.
namespace pravik::test {

/// A plain frame.
inline cv::Mat plainFrame(int brightness, cv::Size size = {64, 48}) {
  return {size, CV_8UC3, cv::Scalar::all(brightness)};
}

/// A temporary folder that films are written to.
class VideoFolder : public TemporaryFolder {
 public:
  /// A video of these frames, all of one size and one number of channels, as motion JPEG.
  std::string video(const std::string& name, const std::vector<cv::Mat>& frames, double rate = 10,
                    cv::Size size = {64, 48}) const {
    const std::string file = (path() / name).string();
    if (!frames.empty()) size = frames.front().size();
    const bool hasColour = frames.empty() || frames.front().channels() == 3;
    cv::VideoWriter writer(file, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), rate, size,
                           hasColour);
    if (!writer.isOpened()) throw std::runtime_error("no video can be written to " + file);
    for (const cv::Mat& frame : frames) writer.write(frame);
    return file;
  }

  /// A video whose frames may be of several sizes: JPEG pictures one after the other.
  std::string motionJpeg(const std::string& name, const std::vector<cv::Mat>& frames) const {
    std::string content;
    for (const cv::Mat& frame : frames) {
      std::vector<unsigned char> picture;
      cv::imencode(".jpg", frame, picture);
      content.append(picture.begin(), picture.end());
    }
    return write(name, content);
  }
};

/// A file cut off after a part of its bytes.
inline void truncateFile(const std::string& path, double part) {
  std::filesystem::resize_file(
      path, static_cast<std::uintmax_t>(static_cast<double>(std::filesystem::file_size(path)) * part));
}

}  // namespace pravik::test
