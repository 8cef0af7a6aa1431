#include "backends/FolderPhotoLibrary.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Utils/Format.h"

namespace pravik {

FolderPhotoLibrary::FolderPhotoLibrary(std::filesystem::path folder, std::shared_ptr<const ImageCodec> codec)
    : folder_(std::move(folder)), codec_(std::move(codec)) {}

void FolderPhotoLibrary::save(const Bitmap& bitmap, const std::string& label) {
  const std::vector<std::uint8_t> bytes = codec_->encode(bitmap, ImageFileFormat::png);
  std::filesystem::create_directories(folder_);
  const std::filesystem::path path = folder_ / formatted("{:03}-{}.png", ++saved_, label);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace pravik
