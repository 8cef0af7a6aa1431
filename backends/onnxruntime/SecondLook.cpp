#include "backends/onnxruntime/SecondLook.h"

#include <algorithm>

namespace pravik::ppocr {
namespace {

constexpr std::ptrdiff_t minimumDigits = 8;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

}  // namespace

bool deservesSecondLook(const std::string& text) {
  const auto digits = std::ranges::count_if(text, isDigit);
  const auto characters = std::ssize(text) - std::ranges::count_if(text, isContinuationByte);
  return digits >= minimumDigits && 2 * digits > characters;
}

TextCandidate agreedReading(const std::vector<TextCandidate>& readings) {
  const auto votes = [&](const TextCandidate& reading) {
    return std::ranges::count(readings, reading.text, &TextCandidate::text);
  };
  return *std::ranges::max_element(readings, [&](const TextCandidate& a, const TextCandidate& b) {
    return std::pair(votes(a), a.confidence) < std::pair(votes(b), b.confidence);
  });
}

}  // namespace pravik::ppocr
