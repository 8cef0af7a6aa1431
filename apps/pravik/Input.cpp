#include "apps/pravik/Input.h"

#include <cstdint>
#include <exception>
#include <istream>
#include <vector>

#include "backends/json/ObservationsJson.h"

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

std::optional<std::string> nextLine(std::istream& in) {
  std::string line;
  std::streambuf& buffer = *in.rdbuf();
  int c = buffer.sbumpc();
  if (c == std::char_traits<char>::eof()) return std::nullopt;
  for (; c != '\n' && c != std::char_traits<char>::eof(); c = buffer.sbumpc())
    if (line.size() <= maximumObservationsBytes) line += static_cast<char>(c);
  return line;
}

std::string wholeText(std::istream& in) {
  std::string whole;
  std::streambuf& buffer = *in.rdbuf();
  for (int c = buffer.sbumpc(); c != std::char_traits<char>::eof(); c = buffer.sbumpc()) {
    whole += static_cast<char>(c);
    if (whole.size() > maximumObservationsBytes) break;
  }
  return whole;
}

}  // namespace pravik::cli
