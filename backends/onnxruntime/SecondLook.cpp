#include "backends/onnxruntime/SecondLook.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <tuple>

#include "Utils/Text.h"
#include "backends/onnxruntime/Cropping.h"

namespace pravik::ppocr {
namespace {

constexpr std::ptrdiff_t minimumDigits = 8;
/// A line read with less confidence than this is read again: a stroke may lie outside its box.
constexpr float doubtfulConfidence = 0.9F;
constexpr std::size_t shortestCapitals = 5;

/// Another way to cut a line out: a margin in heights of the line, and how much it is stretched along the line.
struct Look {
  float margin;
  double stretch;
};
/// The recogniser's usual fault in a row of digits, one read twice or dropped, depends on where its steps of 8 columns
/// fall on the digits: another scale moves them all.
constexpr std::array<Look, 4> furtherLooks{{{0.12F, 1.0}, {0.25F, 1.15}, {0.06F, 0.9}, {0.18F, 1.3}}};
/// Other doubtful lines are given up earlier: what is no text never repeats.
constexpr std::size_t looksAtWords = 2;
/// Lines of a picture that are read again: more than stand on a card, both of its sides and what lies around it. A page
/// full of numbers would take five times as long.
constexpr std::size_t maximumRereads = 64;

std::ptrdiff_t characterCount(const std::string& text) {
  return std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
}

/// A line in capitals is a name more often than not, and no word list tells a misread letter in it.
bool isInCapitals(const std::string& text) {
  const auto isCapitalOrSpace = [](char c) { return c == ' ' || ('A' <= c && c <= 'Z'); };
  return text.size() >= shortestCapitals && std::ranges::all_of(text, isCapitalOrSpace);
}

/// A lone character is a small picture of few strokes: none of them may be missing.
bool isDoubtful(const TextCandidate& reading) {
  return reading.confidence < doubtfulConfidence || characterCount(reading.text) == 1 || isInCapitals(reading.text);
}

/// A line that is read again, by its number, and all that was read so far.
struct Reread {
  std::size_t line;
  std::vector<TextCandidate> readings;
};

/// What two readings of a line must have in common to be the same: all but spaces, and the waves that the relief of
/// raised digits makes of them.
std::string core(const TextCandidate& reading) {
  std::string text = reading.text;
  std::erase_if(text, [](char c) { return c == ' ' || c == '~'; });
  return text;
}

std::ptrdiff_t votesFor(const TextCandidate& reading, const std::vector<TextCandidate>& readings) {
  return std::ranges::count(readings, core(reading), core);
}

/// Whether a text was read twice, so that another look would not change it.
bool repeats(const std::vector<TextCandidate>& readings) {
  return std::ranges::any_of(readings, [&](const auto& reading) { return votesFor(reading, readings) > 1; });
}

std::vector<std::string> charactersOf(const std::string& text) {
  std::vector<std::string> characters;
  for (const char c : text) {
    const bool continues = (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
    if (continues && !characters.empty())
      characters.back() += c;
    else
      characters.emplace_back(1, c);
  }
  return characters;
}

/// The readings that are as long as most of them; of several such lengths that of the surest reading. The surest comes
/// first.
std::vector<std::vector<std::string>> readingsOfOneLength(std::vector<TextCandidate> readings) {
  std::ranges::stable_sort(readings, std::greater{}, &TextCandidate::confidence);
  std::vector<std::vector<std::string>> all, best;
  for (const TextCandidate& reading : readings) {
    const bool isNumber = deservesSecondLook(reading.text);
    all.push_back(charactersOf(isNumber ? core(reading) : reading.text));
  }
  for (const auto& reading : all) {
    std::vector<std::vector<std::string>> same;
    std::ranges::copy_if(all, std::back_inserter(same), [&](const auto& r) { return r.size() == reading.size(); });
    if (same.size() > best.size()) best = std::move(same);
  }
  return best;
}

/// Puts together, character by character, what most readings say that do not repeat as a whole.
TextCandidate votedReading(const std::vector<TextCandidate>& readings) {
  const auto texts = readingsOfOneLength(readings);
  std::string voted;
  std::ptrdiff_t agreeing = 0;
  for (std::size_t i = 0; i < texts.front().size(); ++i) {
    const auto votes = [&](const std::vector<std::string>& text) {
      return std::ranges::count_if(texts, [&](const auto& other) { return other[i] == text[i]; });
    };
    const auto& winner = *std::ranges::max_element(texts, {}, votes);
    voted += winner[i];
    agreeing += votes(winner);
  }
  float confidence = 0;
  for (const TextCandidate& reading : readings) confidence += reading.confidence;
  const auto all = static_cast<float>(readings.size());
  const auto length = static_cast<float>(std::max<std::size_t>(1, texts.front().size()));
  return {voted, confidence / all * static_cast<float>(agreeing) / (all * length)};
}

cv::Mat lineOf(const cv::Mat& picture, const TextBox& box, const Look& look) {
  cv::Mat line = cropOf(picture, withMargin(box, look.margin));
  if (look.stretch != 1) cv::resize(line, line, {}, look.stretch, 1, cv::INTER_CUBIC);
  return line;
}

}  // namespace

bool deservesSecondLook(const std::string& text) {
  const auto digits = std::ranges::count_if(text, isAsciiDigit);
  return digits >= minimumDigits && 2 * digits > characterCount(text);
}

TextCandidate agreedReading(const std::vector<TextCandidate>& readings) {
  if (readings.size() > 1 && !repeats(readings)) return votedReading(readings);
  const auto rank = [&](const TextCandidate& reading) {
    const auto same = std::ranges::count(readings, reading.text, &TextCandidate::text);
    return std::tuple(votesFor(reading, readings), same, reading.confidence);
  };
  const TextCandidate agreed = *std::ranges::max_element(readings, {}, rank);
  float sum = 0;
  for (const TextCandidate& reading : readings) sum += core(reading) == core(agreed) ? reading.confidence : 0;
  return {agreed.text, sum / static_cast<float>(readings.size())};
}

std::vector<std::size_t> linesToReread(const std::vector<TextCandidate>& readings) {
  std::vector<std::size_t> numbers, others;
  for (std::size_t i = 0; i < readings.size(); ++i) {
    if (deservesSecondLook(readings[i].text))
      numbers.push_back(i);
    else if (isDoubtful(readings[i]))
      others.push_back(i);
  }
  numbers.insert(numbers.end(), others.begin(), others.end());
  numbers.resize(std::min(numbers.size(), maximumRereads));
  std::ranges::sort(numbers);
  return numbers;
}

void lookAgain(const LineReader& reader, const cv::Mat& picture, const std::vector<TextBox>& boxes,
               std::vector<TextCandidate>& readings, const WorkLimit& limit) {
  std::vector<Reread> rereads;
  for (const std::size_t line : linesToReread(readings)) rereads.push_back({line, {readings[line]}});
  for (std::size_t number = 0; number < furtherLooks.size() && !limit.isSpent(); ++number) {
    const Look& look = furtherLooks[number];
    std::vector<Reread*> open;
    std::vector<cv::Mat> lines;
    for (Reread& reread : rereads) {
      const bool isWorthIt = number < looksAtWords || deservesSecondLook(reread.readings.front().text);
      if (repeats(reread.readings) || !isWorthIt) continue;
      open.push_back(&reread);
      lines.push_back(lineOf(picture, boxes[reread.line], look));
    }
    const auto further = reader.read(lines, limit);
    if (limit.isSpent()) break;
    for (std::size_t i = 0; i < open.size(); ++i) open[i]->readings.push_back(further[i]);
  }
  for (const Reread& reread : rereads) readings[reread.line] = agreedReading(reread.readings);
}

}  // namespace pravik::ppocr
