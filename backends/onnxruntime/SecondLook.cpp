#include "backends/onnxruntime/SecondLook.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <opencv2/imgproc.hpp>

#include "backends/onnxruntime/Cropping.h"

namespace pravik::ppocr {
namespace {

constexpr std::ptrdiff_t minimumDigits = 8;
/// A line read with less confidence than this is read again: a stroke may lie outside its box.
constexpr float doubtfulConfidence = 0.9F;

/// Another way to cut a line out: a margin in heights of the line, and how much it is stretched along the line.
struct Look {
  float margin;
  double stretch;
};
/// The recogniser's usual fault in a row of digits, one read twice or dropped, depends on where its steps of 8 columns
/// fall on the digits: another scale moves them all.
constexpr std::array<Look, 2> furtherLooks{{{0.12F, 1.0}, {0.25F, 1.15}}};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
std::ptrdiff_t characterCount(const std::string& text) {
  return std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
}

/// A lone character is a small picture of few strokes: none of them may be missing.
bool isDoubtful(const TextCandidate& reading) {
  return reading.confidence < doubtfulConfidence || characterCount(reading.text) == 1;
}

/// A line that is read again, by its number, and all that was read so far.
struct Reread {
  std::size_t line;
  std::vector<TextCandidate> readings;
};

/// Whether the first two looks gave the same text, so that a third would not change it.
bool repeats(const std::vector<TextCandidate>& readings) {
  return readings.size() > 1 && readings[0].text == readings[1].text;
}

cv::Mat lineOf(const cv::Mat& picture, const TextBox& box, const Look& look) {
  cv::Mat line = cropOf(picture, withMargin(box, look.margin));
  if (look.stretch != 1) cv::resize(line, line, {}, look.stretch, 1, cv::INTER_CUBIC);
  return line;
}

}  // namespace

bool deservesSecondLook(const std::string& text) {
  const auto digits = std::ranges::count_if(text, isDigit);
  return digits >= minimumDigits && 2 * digits > characterCount(text);
}

TextCandidate agreedReading(const std::vector<TextCandidate>& readings) {
  const auto votes = [&](const TextCandidate& reading) {
    return std::ranges::count(readings, reading.text, &TextCandidate::text);
  };
  const TextCandidate agreed = *std::ranges::max_element(readings, [&](const auto& a, const auto& b) {
    return std::pair(votes(a), a.confidence) < std::pair(votes(b), b.confidence);
  });
  float sum = 0;
  for (const TextCandidate& reading : readings) sum += reading.text == agreed.text ? reading.confidence : 0;
  return {agreed.text, sum / static_cast<float>(readings.size())};
}

void lookAgain(const LineReader& reader, const cv::Mat& picture, const std::vector<TextBox>& boxes,
               std::vector<TextCandidate>& readings) {
  std::vector<Reread> rereads;
  for (std::size_t i = 0; i < boxes.size(); ++i)
    if (isDoubtful(readings[i]) || deservesSecondLook(readings[i].text)) rereads.push_back({i, {readings[i]}});
  for (const Look& look : furtherLooks) {
    std::vector<Reread*> open;
    std::vector<cv::Mat> lines;
    for (Reread& reread : rereads) {
      if (repeats(reread.readings)) continue;
      open.push_back(&reread);
      lines.push_back(lineOf(picture, boxes[reread.line], look));
    }
    const auto further = reader.read(lines);
    for (std::size_t i = 0; i < open.size(); ++i) open[i]->readings.push_back(further[i]);
  }
  for (const Reread& reread : rereads) readings[reread.line] = agreedReading(reread.readings);
}

}  // namespace pravik::ppocr
