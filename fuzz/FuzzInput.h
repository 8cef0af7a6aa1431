#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/TextRecognizer.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

// What the fuzz targets share. Inputs are text for the most part, so that seeds and findings can be read and written.
namespace pravik::fuzz {

/// Ends the process, which the fuzzer takes for a crash, when the code under test breaks a promise.
inline void require(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// A printable character gives a coordinate in 0...1, others one outside, and the last few bytes no number at all.
inline double coordinate(char character) {
  constexpr std::array oddValues{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), 1e300};
  const auto byte = static_cast<unsigned char>(character);
  const std::size_t odd = std::size_t{byte} + oddValues.size() - 256;
  return odd < oddValues.size() ? oddValues[odd] : (byte - ' ') / 94.0;
}

/// One block a line: four characters for x, y, width and height, then the text, in which a vertical tab stands for a
/// line feed. A shorter line is a block without text at the lower left.
inline Observations observationsIn(std::string_view input) {
  constexpr std::size_t boxBytes = 4;
  Observations blocks;
  if (input.empty()) return blocks;
  for (const std::string_view line : splitAtLineFeeds(input)) {
    TextRecognizer::Observation& block = blocks.emplace_back();
    if (line.size() < boxBytes) continue;
    block.boundingBox = {coordinate(line[0]), coordinate(line[1]), coordinate(line[2]), coordinate(line[3])};
    block.text = replacingAll(line.substr(boxBytes), "\v", "\n");
    block.confidence = 0.9F;
  }
  return blocks;
}

/// The first line, and what follows it.
inline std::pair<std::string_view, std::string_view> firstLine(std::string_view input) {
  const std::size_t end = input.find('\n');
  return end == std::string_view::npos ? std::pair{input, std::string_view()}
                                       : std::pair{input.substr(0, end), input.substr(end + 1)};
}

inline bool isDigits(std::string_view text, std::size_t length) {
  return text.size() == length && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Lets the log say everything, to nobody, so that its messages are exercised too.
inline void logEverything() {
  static const bool once = [] {
    OCRLogger::setSink([](std::string_view) {});
    OCRLogger::setLevel(OCRLogger::Level::verbose);
    return true;
  }();
  static_cast<void>(once);
}

}  // namespace pravik::fuzz
