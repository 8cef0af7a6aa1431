#include "apps/pravik/PictureInput.h"

#include <cstdint>
#include <exception>
#include <istream>
#include <vector>

namespace pravik::cli {
namespace {

Image decodeStream(const ImageCodec& codec, std::istream& in) {
  std::vector<std::uint8_t> bytes(maximumPictureFileBytes + 1);
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(in.gcount()));
  return codec.decode(bytes);
}

}  // namespace

tl::expected<Image, std::string> readPicture(const std::string& file, const ImageCodec& codec, std::istream& in) {
  try {
    return file == "-" ? decodeStream(codec, in) : codec.load(file);
  } catch (const std::exception& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

}  // namespace pravik::cli
