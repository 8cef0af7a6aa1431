#pragma once

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>

namespace pravik {

/// An open device file. A camera's controls can be used through it while something else takes the pictures.
class DeviceFile {
 public:
  explicit DeviceFile(const std::filesystem::path& path)
      : descriptor_(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {}
  ~DeviceFile() {
    if (isOpen()) ::close(descriptor_);
  }
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }

  /// Sends a request of the driver's; false when it cannot be answered.
  template <class Argument>
  bool control(unsigned long request, Argument& argument) const {
    return isOpen() && ::ioctl(descriptor_, request, &argument) == 0;
  }

 private:
  int descriptor_;
};

}  // namespace pravik
