
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string_view>

#include "Reading/CorrectionRules.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// A value that may go on in the next line.
struct ContinuedValue {
  std::string_view label;
  /// What stands below it: a block that begins so, or has as many digits.
  std::string_view nextLabel;
  std::size_t nextDigits;
  /// How far above the label's line it may begin, in heights of a line: the label may stand between two lines.
  double above;
  /// What its text ends with; empty when it may end with anything.
  std::u32string_view endings;
  /// How much a line holds at least that goes on in the next one, in Chinese characters; 0 when that is not known.
  double leastOfLine;
};
/// A line of an address has room for 11 characters; a number that does not fit stands in the next one.
constexpr std::array<ContinuedValue, 2> continuedValues{{
    {"签发机关", "有效期", 8, 1.2, U"局所厅处队", 0},
    {"住址", "公民身份", 15, 0.5, {}, 8.5},
}};
/// How sure a value is at most with a line whose end was not read.
constexpr float confidenceOfCutLine = 0.3F;

/// In heights of a line: blocks of one line differ less, and the next line stands no further below.
constexpr double sameLine = 0.5;
constexpr double nextLine = 2;
/// In characters: a value's lines begin at one place, and blocks of a line stand no further apart.
constexpr double alignment = 2.5;
constexpr double widestGap = 3;
/// No value has more blocks.
constexpr std::size_t maximumParts = 8;

/// How far one block stands below another, in heights of a line.
double linesBelow(const Observation& block, const Observation& other) {
  return (topOriginMidY(block) - topOriginMidY(other)) / std::max(block.boundingBox.height, other.boundingBox.height);
}

double characterWidth(const Observation& block) {
  return block.boundingBox.width / static_cast<double>(std::max<std::size_t>(1, characterCount(block.text)));
}

/// What a label's block says behind the label.
std::string_view valueBeside(const Observation& label, const ContinuedValue& value) {
  return trimmed(std::string_view(label.text).substr(value.label.size()), U" :");
}

/// Where the lines of a value begin whose label stands in this block.
double valueLeft(const Observation& label, const ContinuedValue& value) {
  return label.boundingBox.x + characterWidth(label) * static_cast<double>(characterCount(value.label));
}

bool beginsWithALabel(const Observation& block, SceneType scene) {
  constexpr std::size_t shortLabelBytes = 6;  // An address may go on with "民族路".
  return std::ranges::any_of(labelsOf(scene), [&](std::string_view label) {
    return block.text == label || (label.size() > shortLabelBytes && block.text.starts_with(label));
  });
}

/// Where the next value begins, in lines below the label.
double endOfValue(const Observations& observations, const Observation& label, const ContinuedValue& value) {
  double end = std::numeric_limits<double>::max();
  for (const Observation& block : observations) {
    const double below = linesBelow(block, label);
    if (below < sameLine) continue;
    if (block.text.starts_with(value.nextLabel) || asciiDigits(block.text).size() >= value.nextDigits)
      end = std::min(end, below - sameLine);
  }
  return end;
}

/// What may belong to the value: blocks beside the label and below it, and above it when none stands beside it.
Observations blocksAround(const Observations& observations, const Observation& label, const ContinuedValue& value,
                          SceneType scene) {
  const double end = endOfValue(observations, label, value);
  const auto isBeside = [&](const Observation& block) { return std::abs(linesBelow(block, label)) < sameLine; };
  const auto mayBelong = [&](const Observation& block) {
    if (&block == &label || trimmed(block.text).empty() || beginsWithALabel(block, scene)) return false;
    const double below = linesBelow(block, label);
    const double left = isBeside(block) ? label.boundingBox.midX() : label.boundingBox.x;
    return -value.above <= below && below < end && block.boundingBox.midX() > left;
  };
  Observations blocks;
  std::ranges::copy_if(observations, std::back_inserter(blocks), mayBelong);
  if (std::ranges::any_of(blocks, isBeside) || !valueBeside(label, value).empty())
    std::erase_if(blocks, [&](const Observation& block) { return linesBelow(block, label) < -sameLine; });
  return blocks;
}

/// Whether a line goes on with the value of the line before.
bool goesOn(const Observation& line, const Observation& before, double left) {
  const double below = linesBelow(line, before);
  if (below < sameLine) return true;
  return below <= nextLine && std::abs(line.boundingBox.x - left) <= alignment * characterWidth(line);
}

/// The blocks of a value in reading order, without what stands beside its label in one block.
Observations partsOf(const Observations& observations, const Observation& label, const ContinuedValue& value,
                     SceneType scene) {
  const bool isBeside = !valueBeside(label, value).empty();
  double left = isBeside ? valueLeft(label, value) : 0;
  Observation last = label;
  Observations parts;
  const Observations blocks = blocksAround(observations, label, value, scene);
  for (const Observations& line : groupedByLine(blocks, sameLine * label.boundingBox.height)) {
    if (parts.empty() && !isBeside) left = line.front().boundingBox.x;
    if (!goesOn(line.front(), last, left)) break;
    for (const Observation& block : line) {
      const double gap = block.boundingBox.x - last.boundingBox.maxX();
      const bool isSameLine = std::abs(linesBelow(block, last)) < sameLine;
      if (isSameLine && !parts.empty() && gap > widestGap * characterWidth(block)) break;
      parts.push_back(block);
      last = block;
      if (parts.size() == maximumParts) return parts;
    }
  }
  return parts;
}

/// Without the last parts behind which the value cannot end.
void dropBehindEnding(Observations& parts, const ContinuedValue& value) {
  if (value.endings.empty()) return;
  const auto isEnding = [&](const Observation& part) {
    return value.endings.find(codePoints(trimmed(part.text)).back()) != std::u32string_view::npos;
  };
  while (!parts.empty() && !isEnding(parts.back())) parts.pop_back();
}

/// The width of a text in Chinese characters; digits and letters are half as wide.
double widthInCharacters(std::string_view text) {
  double width = 0;
  for (const char32_t point : codePoints(text)) width += point < 0x80 ? 0.5 : 1;
  return width;
}

/// Whether a line before the last is too short to go on in the next one, so that its end was not read.
bool hasCutLine(const Observations& parts, const Observation& label, const ContinuedValue& value) {
  double width = widthInCharacters(valueBeside(label, value));
  const Observation* before = &label;
  for (const Observation& part : parts) {
    if (std::abs(linesBelow(part, *before)) >= sameLine) {
      if (width > 0 && width < value.leastOfLine) return true;
      width = 0;
    }
    width += widthInCharacters(part.text);
    before = &part;
  }
  return false;
}

/// The parts as one block on the label's line, to the right of the label.
Observation together(const Observations& parts, const Observation& label) {
  Observation whole = parts.front();
  whole.text.clear();
  double right = 0;
  for (const Observation& part : parts) {
    whole.text += trimmed(part.text);
    whole.confidence = std::min(whole.confidence, part.confidence);
    whole.boundingBox.x = std::min(whole.boundingBox.x, part.boundingBox.x);
    right = std::max(right, part.boundingBox.maxX());
  }
  whole.boundingBox.x = std::max(whole.boundingBox.x, label.boundingBox.maxX());
  whole.boundingBox.width = std::max(0.0, right - whole.boundingBox.x);
  whole.boundingBox.y = label.boundingBox.y;
  whole.boundingBox.height = label.boundingBox.height;
  return whole;
}

void joinValue(Observations& observations, const ContinuedValue& value, SceneType scene) {
  const auto label =
      std::ranges::find_if(observations, [&](const Observation& block) { return block.text.starts_with(value.label); });
  if (label == observations.end()) return;
  Observations parts = partsOf(observations, *label, value, scene);
  dropBehindEnding(parts, value);
  const bool isBeside = !valueBeside(*label, value).empty();
  if (parts.size() < (isBeside ? 1 : 2)) return;

  Observation whole = together(parts, *label);
  if (hasCutLine(parts, *label, value)) whole.confidence = std::min(whole.confidence, confidenceOfCutLine);
  if (isBeside) {
    label->text += whole.text;
    label->confidence = std::min(label->confidence, whole.confidence);
  } else {
    // A block that a foreign engine gave odd numbers equals nothing, not even itself.
    const auto first = std::ranges::find(observations, parts.front());
    if (first == observations.end()) return;
    *first = whole;
  }
  std::erase_if(observations, [&](const Observation& block) { return std::ranges::find(parts, block) != parts.end(); });
}

}  // namespace

Observations withContinuedValues(Observations observations, SceneType scene) {
  for (const ContinuedValue& value : continuedValues)
    if (std::ranges::find(labelsOf(scene), value.label) != labelsOf(scene).end()) joinValue(observations, value, scene);
  return observations;
}

}  // namespace pravik
