#include "backends/onnxruntime/WordJoining.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

namespace pravik::ppocr {
namespace {

/// In heights of the boxes, which are themselves a little higher and longer than the letters.
constexpr float maximumGap = 0.8F;
constexpr float maximumOffset = 0.3F;
constexpr float maximumHeightRatio = 1.35F;

bool isLatin(const std::string& text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80U; });
}

cv::Point2f middle(const cv::Point2f& a, const cv::Point2f& b) {
  return (a + b) * 0.5F;
}

bool isNextWord(const ReadLine& left, const ReadLine& right) {
  if (!isLatin(left.reading.text) || !isLatin(right.reading.text)) return false;
  const float height = std::min(left.box.height(), right.box.height());
  if (std::max(left.box.height(), right.box.height()) > maximumHeightRatio * height) return false;
  const auto& [topLeft, topRight, bottomRight, bottomLeft] = left.box.corners;
  const cv::Point2f along = (topRight - topLeft) / std::max(left.box.width(), 1.F);
  const cv::Point2f between = middle(right.box.corners[0], right.box.corners[3]) - middle(topRight, bottomRight);
  const float gap = between.dot(along);
  const float offset = std::abs(between.x * along.y - between.y * along.x);
  return gap > -height / 2 && gap < maximumGap * height && offset < maximumOffset * height;
}

/// The confidence of the whole is the mean over its characters.
ReadLine together(const ReadLine& left, const ReadLine& right) {
  const auto leftLength = static_cast<float>(left.reading.text.size());
  const auto rightLength = static_cast<float>(right.reading.text.size());
  const auto& a = left.box.corners;
  const auto& b = right.box.corners;
  return {{{a[0], b[1], b[2], a[3]}, std::min(left.box.score, right.box.score)},
          {left.reading.text + " " + right.reading.text,
           (left.reading.confidence * leftLength + right.reading.confidence * rightLength) /
               std::max(1.F, leftLength + rightLength)}};
}

}  // namespace

std::vector<ReadLine> withWordsJoined(std::vector<ReadLine> lines) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto next = [&] {
      return std::ranges::find_if(
          lines, [&](const ReadLine& line) { return &line != &lines[i] && isNextWord(lines[i], line); });
    };
    for (auto word = next(); word != lines.end(); word = next()) {
      const auto place = static_cast<std::size_t>(word - lines.begin());
      lines[i] = together(lines[i], *word);
      lines.erase(word);
      if (place < i) --i;
    }
  }
  return lines;
}

}  // namespace pravik::ppocr
