#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace pravik::test {

/// A folder of its own that goes with the test.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "pravik-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// The path of a new file of this content.
  std::string write(const std::string& name, std::string_view content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return (path_ / name).string();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace pravik::test
