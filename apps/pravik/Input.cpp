#include "apps/pravik/Input.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <istream>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "backends/json/ObservationsJson.h"

namespace pravik::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* standardInput = "-";
/// How the files in a folder end that are taken for pictures.
constexpr std::array<std::string_view, 10> pictureExtensions{".jpg",  ".jpeg", ".png",  ".bmp", ".webp",
                                                             ".heic", ".heif", ".tiff", ".tif", ".pdf"};

PictureFile openPicture(const std::string& file, const ImageCodec& codec, std::istream& in) {
  if (file != standardInput) return codec.open(fs::path(file));
  std::vector<std::uint8_t> bytes(maximumPictureFileBytes + 1);
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(in.gcount()));
  return codec.open(std::move(bytes));
}

bool isNamedLikeAPicture(const fs::path& path) {
  std::string extension = path.extension().string();
  std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::ranges::find(pictureExtensions, extension) != pictureExtensions.end();
}

/// What a folder holds, in the order of the names, without what is hidden. Empty, with `error` set, when it cannot be
/// looked into.
std::vector<fs::directory_entry> entriesOf(const fs::path& folder, std::error_code& error) {
  std::vector<fs::directory_entry> entries;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
    if (!at->path().filename().string().starts_with('.')) entries.push_back(*at);
  std::ranges::sort(entries, {}, [](const fs::directory_entry& entry) { return entry.path().native(); });
  return entries;
}

std::function<Image()> failing(const std::string& reason) {
  return [reason]() -> Image { throw std::runtime_error(reason); };
}

}  // namespace

tl::expected<Image, std::string> readPicture(const std::string& file, const ImageCodec& codec, std::istream& in) {
  try {
    return openPicture(file, codec, in).decode(0);
  } catch (const std::exception& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

PictureQueue::PictureQueue(const PictureNames& names, const ImageCodec& codec, std::istream& in)
    : codec_(codec), in_(in), listEnd_(names.isListNul ? '\0' : '\n'), isRecursive_(names.isRecursive) {
  for (const std::string& input : names.inputs) add(input);
  if (names.list.empty()) return;
  if (names.list == standardInput) {
    list_ = &in;
    return;
  }
  listFile_.open(names.list, std::ios::binary);
  std::error_code ignored;
  if (!listFile_ || fs::is_directory(names.list, ignored))
    throw std::runtime_error("cannot read " + names.list + ": " +
                             std::generic_category().message(listFile_ ? EISDIR : errno));
  list_ = &listFile_;
}

void PictureQueue::add(const std::string& input) {
  std::error_code ignored;
  if (input == standardInput || !fs::is_directory(input, ignored)) {
    names_.push_back({input, {}});
    return;
  }
  const std::size_t before = names_.size();
  addFolder(input);
  if (names_.size() == before)
    names_.push_back({input, isRecursive_ ? "no pictures in this folder"
                                          : "no pictures in this folder (--recursive looks into those within it)"});
}

void PictureQueue::addFolder(const std::string& folder) {
  std::error_code error;
  for (const fs::directory_entry& entry : entriesOf(folder, error)) {
    std::error_code ignored;
    const bool isFolder = entry.is_directory(ignored);
    if (isFolder && isRecursive_ && !entry.is_symlink(ignored)) addFolder(entry.path().string());
    if (!isFolder && isNamedLikeAPicture(entry.path())) names_.push_back({entry.path().string(), {}});
  }
  if (error) names_.push_back({folder, "cannot be read: " + error.message()});
}

std::optional<PictureQueue::Named> PictureQueue::nextName() {
  while (names_.empty() && list_ != nullptr) {
    const auto line = nextLine(*list_, listEnd_);
    if (!line) list_ = nullptr;
    // The standard input holds the list.
    if (line && !line->empty()) add(*line == standardInput ? "./-" : *line);
  }
  if (names_.empty()) return std::nullopt;
  Named name = std::move(names_.front());
  names_.pop_front();
  return name;
}

void PictureQueue::open(const Named& name) {
  try {
    if (!name.problem.empty()) throw std::runtime_error(name.problem);
    const auto file = std::make_shared<const PictureFile>(openPicture(name.file, codec_, in_));
    const auto page = [&](int index) { return file->pageCount == 1 ? std::nullopt : std::optional(index + 1); };
    for (int i = 0; i < std::min(file->pageCount, maximumPages); ++i)
      pages_.push_back({name.file, page(i), [file, i] { return file->decode(i); }});
    if (file->pageCount > maximumPages)
      pages_.push_back({name.file, page(maximumPages),
                        failing(std::to_string(file->pageCount - maximumPages) +
                                " more pages were left out: of a file " + std::to_string(maximumPages) + " are read")});
  } catch (const std::exception& error) {
    pages_.push_back({name.file, std::nullopt, failing(error.what())});
  }
}

std::size_t PictureQueue::countAhead(std::size_t most) {
  while (pages_.size() < most) {
    const auto name = nextName();
    if (!name) break;
    open(*name);
  }
  return std::min(most, pages_.size());
}

std::optional<PicturePage> PictureQueue::next() {
  if (countAhead(1) == 0) return std::nullopt;
  PicturePage page = std::move(pages_.front());
  pages_.pop_front();
  ++given_;
  return page;
}

std::optional<std::size_t> PictureQueue::count() const {
  if (list_ != nullptr) return std::nullopt;
  return given_ + pages_.size() + names_.size();
}

std::optional<std::string> nextLine(std::istream& in, char end) {
  std::string line;
  std::streambuf& buffer = *in.rdbuf();
  int c = buffer.sbumpc();
  if (c == std::char_traits<char>::eof()) return std::nullopt;
  for (; c != end && c != std::char_traits<char>::eof(); c = buffer.sbumpc())
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
