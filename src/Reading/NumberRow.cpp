#include "Reading/NumberRow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "Platform/Projection.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// Rows are cut out this high: the recogniser sees them so.
constexpr int rowPixels = 48;
/// A row of pieces with fewer digits may be a date or a hotline.
constexpr std::size_t leastPieceDigits = 8;
constexpr std::size_t leastNumberDigits = 16;
/// A window with fewer digits shows no number.
constexpr double leastScore = 8;
/// Where numbers stand: shares of the card's height, from the top, and the distance of the windows.
constexpr double firstWindow = 0.42;
constexpr double windowStep = 0.02;
constexpr int windowCount = 17;
constexpr std::array<double, 2> windowHeights{0.075, 0.105};
/// Digits stand this much higher than their distance, the gaps between groups counted in; a detector's box is higher
/// than they are by the inverse of the share; and what lies more level than the slope is read as level.
constexpr double heightOfDigits = 1.15;
constexpr double shareOfBox = 0.8;
constexpr double leastSlope = 0.01;
/// A strip ends so many digit widths beyond the first and the last digit.
constexpr double marginInDigits = 1.2;

/// One way to cut a row: its height and its place across the row in heights of the row, and how far it is stretched.
struct Look {
  DigitReader reader;
  double height;
  double shift;
  double stretch;
};
/// The cut must be tight, since an embossed digit with room around it is read as a picture; the recogniser's usual
/// faults depend on where its steps fall, so each look has a scale of its own.
constexpr std::array<Look, 3> firstLooks{{
    {DigitReader::quick, 1.0, 0, 1.0},
    {DigitReader::quick, 0.88, 0, 1.1},
    {DigitReader::thorough, 0.95, 0, 1.0},
}};
constexpr std::array<Look, 6> furtherLooks{{
    {DigitReader::thorough, 0.85, 0, 1.15},
    {DigitReader::quick, 0.95, 0.06, 0.92},
    {DigitReader::thorough, 1.08, 0, 0.88},
    {DigitReader::quick, 1.0, -0.06, 1.0},
    {DigitReader::thorough, 0.92, 0.05, 1.05},
    {DigitReader::thorough, 0.92, -0.05, 0.95},
}};

/// How much a look resembles a row of digits: as many as it saw, each as far as it is sure of it.
double scoreOf(const SeenDigits& look) {
  double score = 0;
  for (const SeenDigit& digit : look) score += *std::ranges::max_element(digit.probabilities);
  return score;
}

std::vector<SeenDigits> looksAt(const ReadingParts& parts, const Bitmap& card, const Strip& row,
                                std::span<const Look> looks, DigitReader reader) {
  std::vector<Bitmap> cuts;
  for (const Look& look : looks) {
    if (look.reader != reader) continue;
    Strip strip = row;
    strip.height *= look.height;
    strip.middle.y += look.shift * row.height;
    cuts.push_back(cutStrip(card, strip, rowPixels, look.stretch));
  }
  return cuts.empty() ? std::vector<SeenDigits>{} : parts.recognizer.readDigits(cuts, reader, parts.limit);
}

std::vector<SeenDigits> quickLooks(const ReadingParts& parts, const Bitmap& card, const std::vector<Strip>& strips) {
  std::vector<Bitmap> cuts;
  cuts.reserve(strips.size());
  for (const Strip& strip : strips) cuts.push_back(cutStrip(card, strip, rowPixels));
  return parts.recognizer.readDigits(cuts, DigitReader::quick, parts.limit);
}

/// The row of pieces with the most digits: what they say, and the level strip that they cover.
struct PieceRow {
  std::string digits;
  Strip strip;
};

std::optional<PieceRow> rowOfPieces(const Observations& pieces, const Size& card) {
  std::optional<PieceRow> best;
  std::size_t most = leastPieceDigits - 1;
  for (const Observations& line : groupedByLine(pieces, bankCardRowThreshold)) {
    PieceRow row;
    double left = card.width, right = 0, widths = 0, middles = 0, heights = 0;
    for (const Observation& block : line) {
      const std::string digits = asciiDigits(block.text);
      if (digits.empty()) continue;
      row.digits += digits;
      const Rect box = inPixels(flipped(block.boundingBox), card);
      left = std::min(left, box.x);
      right = std::max(right, box.maxX());
      widths += box.width;
      middles += box.width * box.midY();
      heights += box.width * box.height;
    }
    if (row.digits.size() <= most || widths <= 0 || heights <= 0) continue;
    most = row.digits.size();
    row.strip = {{(left + right) / 2, middles / widths}, right - left, heights / widths, 0};
    best = std::move(row);
  }
  return best;
}

/// How a row may lie in the level box that covers it: level, or rising or falling as far as the box is higher than
/// digits of its length are.
std::vector<Strip> waysToLie(const PieceRow& row) {
  const double digitHeight = heightOfDigits * row.strip.length / static_cast<double>(row.digits.size());
  const double slope = std::max(0.0, shareOfBox * row.strip.height - digitHeight) / row.strip.length;
  std::vector<Strip> strips;
  for (const double height : {0.8, 0.65, 0.95}) {
    strips.push_back(row.strip);
    strips.back().height *= height;
  }
  for (const double tilt : {slope, -slope}) {
    if (slope < leastSlope) break;
    strips.push_back(row.strip);
    strips.back().height = digitHeight;
    strips.back().slope = tilt;
  }
  return strips;
}

Point between(const Point& from, const Point& to, double share) {
  return {from.x + share * (to.x - from.x), from.y + share * (to.y - from.y)};
}

/// The windows of the whole width of the card where its number may stand.
std::vector<Strip> windows(const Quadrilateral& card) {
  const double cardHeight =
      between(card.bottomLeft, card.bottomRight, 0.5).y - between(card.topLeft, card.topRight, 0.5).y;
  std::vector<Strip> strips;
  for (const double height : windowHeights)
    for (int window = 0; window < windowCount; ++window) {
      const double share = firstWindow + window * windowStep;
      const Point left = between(card.topLeft, card.bottomLeft, share);
      const Point right = between(card.topRight, card.bottomRight, share);
      const double width = right.x - left.x;
      strips.push_back({between(left, right, 0.5), width, height * cardHeight, (right.y - left.y) / width});
    }
  return strips;
}

struct Scored {
  Strip strip;
  double score = 0;
  SeenDigits seen;
};

/// The strip of those that looks most like a row of digits.
std::optional<Scored> bestOf(const ReadingParts& parts, const Bitmap& card, const std::vector<Strip>& strips) {
  auto looks = quickLooks(parts, card, strips);
  if (looks.size() != strips.size()) return std::nullopt;
  std::optional<Scored> best;
  for (std::size_t i = 0; i < strips.size(); ++i) {
    const double score = scoreOf(looks[i]);
    if (!best || score > best->score) best = Scored{strips[i], score, std::move(looks[i])};
  }
  return best;
}

/// The strip moved, turned and made higher or lower until it fits the digits best.
std::optional<Scored> fitted(const ReadingParts& parts, const Bitmap& card, Strip strip) {
  std::vector<Strip> tries;
  for (const double slope : {-0.025, -0.0125, 0.0, 0.0125, 0.025})
    for (const double shift : {-0.2, -0.1, 0.0, 0.1, 0.2}) {
      tries.push_back(strip);
      tries.back().slope += slope;
      tries.back().middle.y += shift * strip.height;
    }
  auto best = bestOf(parts, card, tries);
  if (!best) return best;
  tries.clear();
  for (const double height : {0.7, 0.85, 1.0, 1.2})
    for (const double shift : {-0.08, 0.0, 0.08}) {
      tries.push_back(best->strip);
      tries.back().height *= height;
      tries.back().middle.y += shift * strip.height;
    }
  return bestOf(parts, card, tries);
}

/// The strip without what lies beyond its digits. While some may be missing, they may lie there.
Strip trimmed(const Scored& row) {
  const auto& seen = row.seen;
  if (seen.size() < leastNumberDigits) return row.strip;
  const double pitch =
      (seen.back().position - seen.front().position) / static_cast<double>(std::max<std::size_t>(seen.size() - 1, 1));
  const double left = std::max(0.0, seen.front().position - marginInDigits * pitch);
  const double right = std::min(1.0, seen.back().position + marginInDigits * pitch);
  Strip strip = row.strip;
  const double along = ((left + right) / 2 - 0.5) * strip.length;
  const double run = 1 / std::hypot(1.0, strip.slope);
  strip.middle.x += along * run;
  strip.middle.y += along * run * strip.slope;
  strip.length *= right - left;
  return strip;
}

/// Reads a row until the looks agree.
NumberRow read(const ReadingParts& parts, const Bitmap& card, const Strip& strip) {
  NumberRow row{.strip = strip, .voted = {}, .looks = {}};
  const auto look = [&](std::span<const Look> looks) {
    for (const DigitReader reader : {DigitReader::quick, DigitReader::thorough})
      std::ranges::move(looksAt(parts, card, strip, looks, reader), std::back_inserter(row.looks));
    row.voted = vote(row.looks);
  };
  look(firstLooks);
  if (row.voted.isSound && row.voted.confidence() == 1) return row;
  look(furtherLooks);
  return row;
}

/// The row that the pieces show, when a quick look reads the same card number.
std::optional<NumberRow> confirmedRow(const ReadingParts& parts, const Bitmap& card, const PieceRow& pieces) {
  if (!passesAsCardNumber(pieces.digits)) return std::nullopt;
  for (const Strip& strip : waysToLie(pieces)) {
    NumberRow row{.strip = strip, .voted = {}, .looks = quickLooks(parts, card, {strip})};
    if (row.looks.size() != 1 || digitsOf(row.looks.front()) != pieces.digits) continue;
    row.voted = vote(row.looks);
    if (row.voted.isSound) return row;
  }
  return std::nullopt;
}

}  // namespace

std::optional<NumberRow> readNumberRow(const ReadingParts& parts, const Bitmap& picture,
                                       const std::optional<Quadrilateral>& outline, const Observations& pieces) {
  if (!parts.recognizer.readsDigits()) return std::nullopt;
  const auto ofPieces = rowOfPieces(pieces, picture.size());
  if (ofPieces)
    if (auto row = confirmedRow(parts, picture, *ofPieces)) return row;
  std::vector<Strip> strips = windows(outline.value_or(cornersOf({0, 0, picture.size().width, picture.size().height})));
  if (ofPieces)
    for (const double height : {0.65, 0.85}) {
      strips.push_back(strips.front());
      strips.back().middle.y = ofPieces->strip.middle.y;
      strips.back().height = height * ofPieces->strip.height;
    }
  const auto found = bestOf(parts, picture, strips);
  if (!found || found->score < leastScore) return std::nullopt;
  const auto fit = fitted(parts, picture, found->strip);
  if (!fit || fit->score < leastScore) return std::nullopt;
  NumberRow row = read(parts, picture, trimmed(*fit));
  OCRLogger::debug([&] {
    return formatted("卡号行: '{}' 一致度={:.2f} ({}次读取) {}", row.voted.digits, row.voted.confidence(),
                     row.looks.size(), row.voted.isSound ? "可信" : "不可信");
  });
  return row;
}

Observations withNumberRow(const Observations& observations, const NumberRow& row, const Size& picture) {
  const double length = row.strip.length / picture.width;
  const double height = (row.strip.height + std::abs(row.strip.slope) * row.strip.length) / picture.height;
  const Rect box{row.strip.middle.x / picture.width - length / 2, row.strip.middle.y / picture.height - height / 2,
                 length, height};
  const Rect within = flipped(intersection(box, {0, 0, 1, 1}));
  Observations result;
  for (const Observation& block : observations)
    if (!within.contains({block.boundingBox.midX(), block.boundingBox.midY()})) result.push_back(block);
  const auto below =
      std::ranges::find_if(result, [&](const Observation& block) { return block.boundingBox.midY() < within.midY(); });
  result.insert(below, {row.voted.digits, static_cast<float>(row.voted.confidence()), within});
  return result;
}

}  // namespace pravik
