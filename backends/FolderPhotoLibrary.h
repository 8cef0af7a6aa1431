#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "Platform/ImageCodec.h"
#include "Platform/PhotoLibrary.h"

namespace pravik {

/// Keeps pictures as PNG files in a folder, numbered in the order in which they were saved: "001-银行卡-原图.png".
/// May be used from several threads.
class FolderPhotoLibrary final : public PhotoLibrary {
 public:
  FolderPhotoLibrary(std::filesystem::path folder, std::shared_ptr<const ImageCodec> codec);

  /// Makes the folder when it is not there.
  void save(const Bitmap& bitmap, const std::string& label) override;

 private:
  std::filesystem::path folder_;
  std::shared_ptr<const ImageCodec> codec_;
  std::atomic<int> saved_{0};
};

}  // namespace pravik
