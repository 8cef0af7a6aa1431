#include "backends/zxing/CodeReader.h"

#include <ZXing/GTIN.h>
#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Utils/Text.h"
#include "backends/zxing/FinderPatterns.h"

namespace pravik {

struct CodeFormat {
  const char* identifier;
  ZXing::BarcodeFormat zxing;
  bool linear;
  /// Rows of pixels that must agree before a linear reading counts. The weaker a format's own checks, the more.
  std::uint8_t minimumRows;
  bool (*accepts)(const std::string& payload);
};

namespace {

bool anyText(const std::string& payload) {
  return !payload.empty();
}

template <std::size_t length>
bool digitsWithCheckDigit(const std::string& payload) {
  return payload.size() == length && std::ranges::all_of(payload, isAsciiDigit) &&
         ZXing::GTIN::IsCheckDigitValid(payload);
}

/// The check digit of UPC-E belongs to the UPC-A number that it shortens; ZXing has verified it.
bool eightDigits(const std::string& payload) {
  return payload.size() == 8;
}

/// Code 39 has no check character of its own, and shapes of one or two characters turn up in any line of print.
bool threeCharacters(const std::string& payload) {
  return payload.size() >= 3;
}

/// Code words that are all zero pass every Reed-Solomon check and decode to a row of "A".
bool otherThanZeros(const std::string& payload) {
  return payload.find_first_not_of('A') != std::string::npos;
}

/// Ordered by how much a reading is worth: error correction and check characters first, then check digits.
constexpr CodeFormat codeFormatTable[] = {
    {"VNBarcodeSymbologyQR", ZXing::BarcodeFormat::QRCode, false, 1, anyText},
    {"VNBarcodeSymbologyAztec", ZXing::BarcodeFormat::Aztec, false, 1, anyText},
    {"VNBarcodeSymbologyDataMatrix", ZXing::BarcodeFormat::DataMatrix, false, 1, anyText},
    {"VNBarcodeSymbologyPDF417", ZXing::BarcodeFormat::PDF417, false, 1, otherThanZeros},
    {"VNBarcodeSymbologyEAN13", ZXing::BarcodeFormat::EAN13, true, 3, digitsWithCheckDigit<13>},
    {"VNBarcodeSymbologyCode128", ZXing::BarcodeFormat::Code128, true, 2, anyText},
    {"VNBarcodeSymbologyCode93", ZXing::BarcodeFormat::Code93, true, 2, anyText},
    {"VNBarcodeSymbologyEAN8", ZXing::BarcodeFormat::EAN8, true, 3, digitsWithCheckDigit<8>},
    {"VNBarcodeSymbologyITF14", ZXing::BarcodeFormat::ITF, true, 3, digitsWithCheckDigit<14>},
    {"VNBarcodeSymbologyUPCE", ZXing::BarcodeFormat::UPCE, true, 4, eightDigits},
    {"VNBarcodeSymbologyCode39", ZXing::BarcodeFormat::Code39, true, 3, threeCharacters},
};

bool isUtf8(const ZXing::ByteArray& bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const std::uint8_t lead = bytes[i++];
    const int trailing = lead < 0x80                   ? 0
                         : lead >= 0xC2 && lead < 0xE0 ? 1
                         : lead >= 0xE0 && lead < 0xF0 ? 2
                         : lead >= 0xF0 && lead < 0xF5 ? 3
                                                       : -1;
    if (trailing < 0) return false;
    for (int k = 0; k < trailing; ++k, ++i)
      if (i >= bytes.size() || (bytes[i] & 0xC0U) != 0x80) return false;
  }
  return true;
}

/// Whether all bytes beyond ASCII stand in pairs of the Chinese national set GB 2312.
bool isGb2312(const ZXing::ByteArray& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] < 0x80) continue;
    const bool pair =
        bytes[i] >= 0xA1 && bytes[i] <= 0xF7 && i + 1 < bytes.size() && bytes[i + 1] >= 0xA1 && bytes[i + 1] <= 0xFE;
    if (!pair) return false;
    ++i;
  }
  return true;
}

/// Samples along a row: several for each of the narrowest bars.
constexpr int samples = 512;
/// Two neighbouring rows of bars correlate nearly fully; bars and what lies beyond them do not.
constexpr double leastCorrelation = 0.5;
/// Where the bars end their contrast goes.
constexpr double leastContrast = 0.5;

/// Grey levels along the row from `from` to `to`; false when it leaves the picture.
bool sampleRow(const cv::Mat& grey, cv::Point2d from, cv::Point2d to, cv::Mat1d& row) {
  const cv::Rect2d inside(0, 0, grey.cols, grey.rows);
  if (!inside.contains(from) || !inside.contains(to)) return false;
  for (int i = 0; i < samples; ++i) {
    const cv::Point2d at = from + (to - from) * (static_cast<double>(i) / (samples - 1));
    row(i) = grey.at<std::uint8_t>(static_cast<int>(at.y), static_cast<int>(at.x));
  }
  return true;
}

double contrast(const cv::Mat1d& row) {
  cv::Scalar mean, deviation;
  cv::meanStdDev(row, mean, deviation);
  return deviation[0];
}

double correlation(const cv::Mat1d& a, const cv::Mat1d& b) {
  const double scale = contrast(a) * contrast(b) * samples;
  return scale > 0 ? (a - cv::mean(a)[0]).dot(b - cv::mean(b)[0]) / scale : 0;
}

/// How many steps the row from `from` to `to` can be moved before it leaves the bars.
int stepsWithinBars(const cv::Mat& grey, cv::Point2d from, cv::Point2d to, cv::Point2d step) {
  cv::Mat1d previous(1, samples), next(1, samples);
  if (!sampleRow(grey, from, to, previous)) return 0;
  const double firstContrast = contrast(previous);
  for (int steps = 0;; ++steps) {
    const cv::Point2d offset = step * (steps + 1);
    if (!sampleRow(grey, from + offset, to + offset, next)) return steps;
    if (contrast(next) < leastContrast * firstContrast || correlation(previous, next) < leastCorrelation) return steps;
    cv::swap(previous, next);
  }
}

/// The outline of a bar code grown from the rows that were read to the whole length of the bars: row by row to both
/// sides, as long as a row looks like the one before it.
CodeOutline grownAlongBars(const cv::Mat& grey, const CodeOutline& rows) {
  const cv::Point2d from = (rows[0] + rows[3]) / 2, to = (rows[1] + rows[2]) / 2;
  const double length = cv::norm(to - from);
  if (length < 1) return rows;
  const cv::Point2d step(-(to.y - from.y) / length, (to.x - from.x) / length);
  const cv::Point2d back = -step * stepsWithinBars(grey, from, to, -step);
  const cv::Point2d forth = step * stepsWithinBars(grey, from, to, step);
  return {from + back, to + back, to + forth, from + forth};
}

/// ZXing tries all triples of the finder patterns that it sees: with so many it takes a tenth of a second, with four
/// times as many ten, and nothing stops it.
constexpr std::size_t maximumFinderPatterns = 200;
/// Sides of the four parts of a crowded picture, in its own: what lies where they meet is whole in one of them.
constexpr double partSide = 0.6;

/// The first code of a picture's four parts.
std::optional<CodeReading> readParts(const cv::Mat& grey, const CodeFormat& format, const WorkLimit& limit) {
  const cv::Size part(static_cast<int>(std::ceil(grey.cols * partSide)),
                      static_cast<int>(std::ceil(grey.rows * partSide)));
  const int right = grey.cols - part.width, bottom = grey.rows - part.height;
  for (const cv::Point origin : {cv::Point(0, 0), {right, 0}, {0, bottom}, {right, bottom}}) {
    auto reading = readCode(grey({origin, part}), format, limit);
    if (!reading) continue;
    for (cv::Point2d& corner : reading->outline) corner += cv::Point2d(origin);
    return reading;
  }
  return std::nullopt;
}

}  // namespace

std::vector<const CodeFormat*> codeFormats(std::span<const BarcodeSymbology> symbologies) {
  std::vector<const CodeFormat*> formats;
  for (const CodeFormat& format : codeFormatTable)
    if (std::ranges::any_of(symbologies, [&](const auto& s) { return s.rawValue == format.identifier; }))
      formats.push_back(&format);
  return formats;
}

bool isLinear(const CodeFormat& format) {
  return format.linear;
}

std::optional<CodeReading> readCode(const cv::Mat& grey, const CodeFormat& format, const WorkLimit& limit) {
  if (limit.isSpent()) return std::nullopt;
  if (format.zxing == ZXing::BarcodeFormat::QRCode && hasMoreFinderPatterns(grey, maximumFinderPatterns))
    return readParts(grey, format, limit);
  // One format and one symbol a call: with assertions on, ZXing 1.4 aborts when it compares symbols of several rows.
  const ZXing::ImageView view(grey.data, grey.cols, grey.rows, ZXing::ImageFormat::Lum, static_cast<int>(grey.step));
  const auto hints = ZXing::DecodeHints().setFormats(format.zxing).setMinLineCount(format.minimumRows);
  ZXing::Result result = ZXing::ReadBarcode(view, hints);
  if (!result.isValid()) return std::nullopt;
  // ZXing takes Chinese text without a declared character set for Latin-1.
  if (!result.hasECI() && !isUtf8(result.bytes()) && isGb2312(result.bytes())) result.setCharacterSet("GB18030");

  std::string payload = result.text();
  if (!format.accepts(payload)) return std::nullopt;
  CodeOutline outline;
  std::ranges::transform(result.position(), outline.begin(),
                         [](auto corner) { return cv::Point2d(corner.x, corner.y); });
  if (format.linear) outline = grownAlongBars(grey, outline);
  return CodeReading{{format.identifier}, std::move(payload), outline};
}

}  // namespace pravik
