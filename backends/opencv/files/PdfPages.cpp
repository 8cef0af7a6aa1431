#include "backends/opencv/files/PdfPages.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "backends/opencv/Mat.h"
#include "backends/opencv/files/ChildProcess.h"
#include "backends/opencv/files/Descriptor.h"

namespace pravik {
namespace {

using namespace std::string_view_literals;
using std::chrono::milliseconds;

/// A card is 1011 x 638 pixels at this resolution, of which the text engine makes the most.
constexpr double dotsPerInch = 300, pointsPerInch = 72;
/// The longer side of a drawn page: an A3 sheet at that resolution.
constexpr int longestSide = 4961;
constexpr std::size_t mostPixelBytes = std::size_t{3} * longestSide * longestSide;
/// Several times what the largest page takes.
constexpr std::size_t mostMemory = std::size_t{1} << 30U;
/// Of two lines a page and what the author says about the document.
constexpr std::size_t mostInformation = std::size_t{1} << 20U;

constexpr const char* tooLong = "drawing the PDF takes too long";

/// The document, and what is left of its time.
struct Document {
  Descriptor file;
  bool isProtected = false;
  PdfLimits limits;
  std::atomic<milliseconds::rep> spent = 0;
  /// The longer side of each page in points, from the first on; of some pages or none where it is not known.
  std::vector<double> longSides;
};

Descriptor inMemory(std::span<const std::uint8_t> bytes) {
  Descriptor file(::memfd_create("document", MFD_CLOEXEC));
  while (!bytes.empty()) {
    const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
    if (written <= 0) throw std::runtime_error("there is no memory for the PDF");
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return file;
}

std::vector<std::uint8_t> outputOf(Document& document, std::vector<std::string> command, std::size_t mostOutput) {
  // Opened anew by its name, so that processes at the same time do not share a place in it.
  command.emplace_back("/proc/self/fd/0");
  const auto begin = std::chrono::steady_clock::now();
  const milliseconds left = document.limits.file - milliseconds(document.spent.load());
  if (left <= milliseconds(0)) throw std::runtime_error(tooLong);
  ProcessOutput output =
      runProcess(command, document.file.get(),
                 {.time = std::min(document.limits.page, left), .memory = mostMemory, .output = mostOutput});
  document.spent += std::chrono::ceil<milliseconds>(std::chrono::steady_clock::now() - begin).count();
  if (output.end == ProcessEnd::notFound)
    throw std::runtime_error("PDF needs the program " + command.front() + ": install poppler-utils");
  if (output.end == ProcessEnd::tookTooLong) throw std::runtime_error(tooLong);
  if (output.end == ProcessEnd::well) return std::move(output.bytes);
  throw std::runtime_error(document.isProtected ? "the PDF is protected by a password" : "the PDF is damaged");
}

/// The number at the start of a text, behind spaces; nothing when there is none.
template <class Number>
std::optional<Number> leadingNumber(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{}) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

/// "Page    2 size:  595.2 x 841.8 pts (A4)", without its first word.
std::optional<double> longSide(std::string_view line) {
  const auto page = leadingNumber<int>(line);
  if (!page || !line.starts_with(" size:"sv)) return std::nullopt;
  line.remove_prefix(" size:"sv.size());
  const auto width = leadingNumber<double>(line);
  line.remove_prefix(std::min(" x"sv.size(), line.size()));
  const auto height = leadingNumber<double>(line);
  if (!width || !height) return std::nullopt;
  return std::max(*width, *height);
}

/// How many pages there are; notes their sizes.
int readInformation(Document& document) {
  const std::vector<std::uint8_t> bytes =
      outputOf(document, {"pdfinfo", "-f", "1", "-l", std::to_string(maximumPages)}, mostInformation);
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  int pages = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with("Pages:"sv)) {
      line.remove_prefix("Pages:"sv.size());
      pages = leadingNumber<int>(line).value_or(0);
    } else if (line.starts_with("Page "sv)) {
      if (const auto side = longSide(line.substr("Page"sv.size()))) document.longSides.push_back(*side);
    }
  }
  if (pages < 1) throw std::runtime_error("the PDF has no pages");
  return pages;
}

int pixelsOfLongSide(const Document& document, int page) {
  const auto index = static_cast<std::size_t>(page);
  if (index >= document.longSides.size()) return longestSide;
  const double pixels = document.longSides[index] / pointsPerInch * dotsPerInch;
  return static_cast<int>(std::clamp(std::round(pixels), 1.0, double{longestSide}));
}

/// The colours of a picture "P6 WIDTH HEIGHT 255" and a byte for each of red, green and blue.
Bitmap bitmapOf(const std::vector<std::uint8_t>& ppm) {
  std::string_view text(reinterpret_cast<const char*>(ppm.data()), std::min<std::size_t>(ppm.size(), 40));
  const auto next = [&](std::string_view separator) -> int {
    if (!text.starts_with(separator)) return 0;
    text.remove_prefix(separator.size());
    return leadingNumber<int>(text).value_or(0);
  };
  const int width = next("P6\n"), height = next(" "), most = next("\n");
  const auto start = static_cast<std::size_t>(text.data() - reinterpret_cast<const char*>(ppm.data())) + 1;
  const bool isPicture = width > 0 && width <= longestSide && height > 0 && height <= longestSide && most == 255;
  if (!isPicture ||
      ppm.size() - start != std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    throw std::runtime_error("the PDF is damaged");
  const cv::Mat rgb(height, width, CV_8UC3, const_cast<std::uint8_t*>(ppm.data()) + start);
  cv::Mat bgra;
  cv::cvtColor(rgb, bgra, cv::COLOR_RGB2BGRA);
  return toBitmap(bgra);
}

}  // namespace

PictureFile pdfPages(std::span<const std::uint8_t> file, const PdfLimits& limits) {
  // Stands in the clear even where the rest is encrypted.
  constexpr std::string_view encryption = "/Encrypt";
  const auto document = std::make_shared<Document>();
  document->file = inMemory(file);
  document->isProtected = !std::ranges::search(file, encryption).empty();
  document->limits = limits;
  const int pages = readInformation(*document);
  return {pages, [document](int page) -> Image {
            const std::string number = std::to_string(page + 1);
            return {.bitmap = bitmapOf(outputOf(*document,
                                                {"pdftoppm", "-cropbox", "-f", number, "-l", number, "-scale-to",
                                                 std::to_string(pixelsOfLongSide(*document, page))},
                                                mostPixelBytes + 64))};
          }};
}

}  // namespace pravik
