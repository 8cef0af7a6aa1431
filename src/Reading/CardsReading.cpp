#include "Reading/ReadPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "Platform/Projection.h"
#include "Reading/PicturePart.h"
#include "Reading/SceneValidation.h"
#include "Reading/UprightPicture.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// Text that no outline holds belongs together when it is no further apart than this many heights of the higher block:
/// the title and the office of an emblem side are.
constexpr double farthestInHeights = 4;
/// A card goes on beyond its text, by this share of the text's extent; an outline may run just inside the edge.
constexpr double marginOfText = 0.12;
constexpr double marginOfOutline = 0.015;
constexpr double marginOfPrint = 0.06;
/// Cards stand in one row when their middles are closer than this share of a card's height.
constexpr double sameRow = 0.5;
/// A card is painted over with this margin, so that nothing of its print is left.
constexpr double marginOfPaint = 0.04;
/// A card of which less than this share of its shorter side is seen has no number to read.
constexpr double roomOfAnother = 0.7;
/// A card as wide as this, as a share of the picture's mean side, has print that a fast look sees.
constexpr double largeForFastLook = 0.45;
/// A paper that names a bank has more blocks of text than a bank card, or sentences, which run over its lines.
constexpr std::size_t mostBlocksOfBankCard = 20;
constexpr std::string_view lineOfSentence = R"([\u4e00-\u9fa5，。、]{15})";
constexpr std::ptrdiff_t fewestLinesOfPaper = 2;
/// The share of a picture from which on a card without an outline is read as if it were all of it.
constexpr double fillingShare = 0.5;

/// A part of the picture that may be a card.
struct Region {
  Quadrilateral corners;
  Observations texts;
  /// Whether the corners are those of an outline, and not of what surrounds the text.
  bool isOutlined = false;
};

Rect united(const Rect& a, const Rect& b) {
  const double x = std::min(a.x, b.x);
  const double y = std::min(a.y, b.y);
  return {x, y, std::max(a.maxX(), b.maxX()) - x, std::max(a.maxY(), b.maxY()) - y};
}

Rect grown(const Rect& area, double by) {
  return {area.x - by, area.y - by, area.width + 2 * by, area.height + 2 * by};
}

/// The text in parts that belong together by their distances.
std::vector<Observations> clusters(Observations texts, const Size& picture) {
  const auto boxOf = [&](const Observation& block) { return inPixels(flipped(block.boundingBox), picture); };
  const auto areNear = [&](const Observation& a, const Observation& b) {
    const Rect one = boxOf(a), other = boxOf(b);
    const double reach =
        farthestInHeights * std::max(std::min(one.width, one.height), std::min(other.width, other.height));
    return intersection(grown(one, reach), other).area() > 0;
  };
  std::vector<Observations> found;
  while (!texts.empty()) {
    Observations cluster{std::move(texts.back())};
    texts.pop_back();
    for (std::size_t i = 0; i < cluster.size(); ++i) {
      const auto others =
          std::ranges::stable_partition(texts, [&](const Observation& block) { return !areNear(cluster[i], block); });
      std::ranges::move(others, std::back_inserter(cluster));
      texts.erase(others.begin(), others.end());
    }
    found.push_back(std::move(cluster));
  }
  return found;
}

Rect surroundings(const Observations& texts, const Size& picture) {
  Rect area = inPixels(flipped(texts.front().boundingBox), picture);
  for (const Observation& block : texts) area = united(area, inPixels(flipped(block.boundingBox), picture));
  return intersection(grown(area, marginOfText * std::max(area.width, area.height)),
                      {0, 0, picture.width, picture.height});
}

/// A print whose place on its card is the same on every card: the text, and where it begins and ends and how high its
/// middle lies, in shares of the card's width and height from its upper left.
struct FixedPrint {
  std::string_view pattern;
  double left;
  double right;
  double middle;
};
/// GA 448-2013 fixes the layout: the number with and without its label, and the second line of the title.
constexpr std::array<FixedPrint, 3> fixedPrints{{
    {R"(^公民身份号码.*\d{17}[\dXx]$)", 0.067, 0.873, 0.876},
    {R"(^\d{17}[\dXx]$)", 0.322, 0.873, 0.876},
    {R"(^居民身份证$)", 0.357, 0.834, 0.352},
}};
constexpr double cardAspect = 85.6 / 54;

/// The card that a block of text with a fixed place stands on, if it lies level.
std::optional<Quadrilateral> cardAround(const Observation& block, const Size& picture) {
  const std::string text = removingAll(block.text, " ");
  const auto print = std::ranges::find_if(
      fixedPrints, [&](const FixedPrint& known) { return RegexHelper::matches(known.pattern, text); });
  if (print == fixedPrints.end()) return std::nullopt;
  const Rect box = inPixels(flipped(block.boundingBox), picture);
  const double width = box.width / (print->right - print->left);
  const double height = width / cardAspect;
  return cornersOf({box.x - print->left * width, box.midY() - print->middle * height, width, height});
}

/// Takes the cards off a text, one after the other.
class Division {
 public:
  Division(Observations texts, const Size& picture) : texts_(std::move(texts)), picture_(picture) {}

  /// Takes what stands within the outline as a card, unless there is nothing, or what several cards have; where the
  /// outline alone is no proof of a card, only with the features of one.
  void take(const Quadrilateral& outline, double margin, bool isOutline, bool isProof) {
    const Quadrilateral area = grown(outline, margin);
    const auto inside = std::ranges::stable_partition(texts_, [&](const Observation& block) {
      const Rect box = inPixels(flipped(block.boundingBox), picture_);
      return !contains(area, {box.midX(), box.midY()});
    });
    Observations held(inside.begin(), inside.end());
    const int documents = documentsIn(held);
    if (held.empty() || documents > 1 || (documents == 0 && !isProof)) return;
    texts_.erase(inside.begin(), inside.end());
    regions_.push_back({area, std::move(held), isOutline});
  }

  /// What is left, in parts that belong together by their distances; only those with the features of a card.
  std::vector<Observations> rest() const {
    std::vector<Observations> parts = clusters(texts_, picture_);
    std::erase_if(parts, [](const Observations& part) { return documentsIn(part) == 0; });
    return parts;
  }
  const Observations& texts() const { return texts_; }
  std::vector<Region>& regions() { return regions_; }

 private:
  Observations texts_;
  Size picture_;
  std::vector<Region> regions_;
};

Quadrilateral moved(Quadrilateral area, double x, double y) {
  for (Point* corner : {&area.topLeft, &area.topRight, &area.bottomLeft, &area.bottomRight}) {
    corner->x += x;
    corner->y += y;
  }
  return area;
}

/// The parts of a picture that may be cards: the outlines with text in them; where text of a card stands in none, those
/// that are found when one looks closer, the places that its fixed prints tell, and at last what surrounds it.
std::vector<Region> regionsOf(const ReadingParts& parts, const Bitmap& picture,
                              const std::vector<Quadrilateral>& outlines, Observations texts) {
  Division division(std::move(texts), picture.size());
  for (const Quadrilateral& outline : outlines) division.take(outline, marginOfOutline, true, true);
  if (const auto rest = division.rest(); !rest.empty()) {
    Rect around = surroundings(rest.front(), picture.size());
    for (const Observations& part : rest) around = united(around, surroundings(part, picture.size()));
    const PixelRect area = touchedPixels(around, picture.size());
    for (const Quadrilateral& outline : parts.preprocessor.cardOutlines(picture.crop(area)))
      division.take(moved(outline, area.x, area.y), marginOfOutline, true, false);
  }
  for (const Observation& block : Observations(division.texts()))
    if (const auto card = cardAround(block, picture.size())) division.take(*card, marginOfPrint, false, false);
  for (Observations& part : division.rest())
    division.regions().push_back({cornersOf(surroundings(part, picture.size())), std::move(part), false});
  return std::move(division.regions());
}

/// From top to bottom, those of a row from left to right.
void sortInReadingOrder(std::vector<CardReading>& cards) {
  std::ranges::sort(cards, {}, [](const CardReading& card) { return middleOf(card.corners).y; });
  for (auto first = cards.begin(); first != cards.end();) {
    const double bound = middleOf(first->corners).y + sameRow * surrounding(first->corners).height;
    const auto end =
        std::find_if(first, cards.end(), [&](const CardReading& card) { return middleOf(card.corners).y > bound; });
    std::ranges::sort(first, end, {}, [](const CardReading& card) { return middleOf(card.corners).x; });
    first = end;
  }
}

bool isPaper(const Observations& texts) {
  const auto isSentence = [](const Observation& block) { return RegexHelper::matches(lineOfSentence, block.text); };
  return texts.size() > mostBlocksOfBankCard || std::ranges::count_if(texts, isSentence) >= fewestLinesOfPaper;
}

/// Whether what has the features of a bank card is one. "银行" and "VALID" stand on papers too, and one in ten of their
/// numbers passes Luhn.
bool isBankCard(const Reading& reading, const Observations& texts, bool isOutlined) {
  if (isPaper(texts))
    return isOutlined && reading.record &&
           std::ranges::find(reading.report.warnings, ReadingWarning::checkFailed) == reading.report.warnings.end();
  return reading.record || isOutlined || hasCardNumber(texts);
}

CardReading readCard(const ReadingParts& parts, const Image& card);

/// A card that fills the picture, read as what its text says it is.
CardReading readCardWith(const ReadingParts& parts, const Image& card, const Observations& texts) {
  if (const auto upright = turnedUpright(parts, card, texts)) return readCard(upright->parts, upright->image);
  // What has the features of several cards was not told apart, and a record would be made of all.
  const std::optional<OCRScanMode> kind = documentsIn(texts) > 1 ? std::nullopt : documentIn(texts);
  if (kind == OCRScanMode::bankCard) {
    Reading reading = readPicture(parts, card, *kind);
    if (isBankCard(reading, texts, parts.origin.outline.has_value()))
      return {.kind = kind, .corners = {}, .reading = std::move(reading), .text = {}};
    return {.kind = {},
            .corners = {},
            .reading = withoutRecord(parts, card, true),
            .text = joinedText(texts, textLineThreshold)};
  }
  if (kind) return {.kind = kind, .corners = {}, .reading = identityCardIn(parts, card, texts, *kind), .text = {}};
  return {.kind = kind,
          .corners = {},
          .reading = withoutRecord(parts, card, !texts.empty()),
          .text = joinedText(texts, textLineThreshold)};
}

Observations textsOn(const ReadingParts& parts, const Image& image, const TextRecognizer::Options& options) {
  const auto prepared = parts.preprocessor.preprocessForIDCard(image);
  if (!prepared) throw OCRError::invalidImage();
  return parts.recognize(*prepared, options);
}

CardReading readCard(const ReadingParts& parts, const Image& card) {
  return readCardWith(parts, card, textsOn(parts, card, TextRecognizer::Options::idCard));
}

CardReading readRegion(const ReadingParts& parts, const Bitmap& picture, const Region& region) {
  const auto unread = [&](const OCRError& error, UnreadReason reason) {
    CardReading card{.kind = documentIn(region.texts),
                     .corners = region.corners,
                     .reading = failed(error, reason),
                     .text = joinedText(region.texts, textLineThreshold)};
    if (card.kind == OCRScanMode::bankCard && !isBankCard(card.reading, region.texts, region.isOutlined))
      card.kind.reset();
    return card;
  };
  if (!parts.goesOn()) return unread(OCRError::insufficientText(), UnreadReason::timeSpent);
  const auto card = parts.preprocessor.straightened(picture, region.corners);
  if (!card) return unread(OCRError::invalidImage(), UnreadReason::engineFailed);
  ReadingParts within = parts.onPart(region.corners, card->size());
  if (region.isOutlined) within.origin.outline = region.corners;
  CardReading found = readCard(within, {.bitmap = card});
  found.corners = renamed(region.corners, found.reading.report.turned);
  return found;
}

void markPair(std::vector<CardReading>& cards) {
  const auto only = [&](OCRScanMode kind) -> CardReading* {
    const auto isIt = [&](const CardReading& card) { return card.kind == kind && card.reading.record; };
    if (std::ranges::count_if(cards, isIt) != 1) return nullptr;
    return &*std::ranges::find_if(cards, isIt);
  };
  CardReading* front = only(OCRScanMode::idCardFront);
  CardReading* back = only(OCRScanMode::idCardBack);
  if (front && back) front->isOneOfAPair = back->isOneOfAPair = true;
}

/// The card within the most certain outline, which is often all that a picture shows; absent when it gives no record.
std::optional<CardReading> firstCard(const ReadingParts& parts, const Bitmap& picture,
                                     const std::vector<Quadrilateral>& outlines) {
  if (outlines.empty()) return std::nullopt;
  CardReading card = readRegion(parts, picture, {grown(outlines.front(), marginOfOutline), {}, true});
  return card.reading.record ? std::optional(std::move(card)) : std::nullopt;
}

/// Whether a picture may show another card beside one that was painted over on it. Cards are of one size: where this
/// one leaves no room there is none, and where it is large a fast look sees the print of others.
bool mayShowMore(const ReadingParts& parts, const Bitmap& picture, const Quadrilateral& card) {
  const Size& size = picture.size();
  const Rect bounds = surrounding(card);
  const double room = std::max({bounds.x, bounds.y, size.width - bounds.maxX(), size.height - bounds.maxY()});
  const double width = std::hypot(card.topRight.x - card.topLeft.x, card.topRight.y - card.topLeft.y);
  const double height = std::hypot(card.bottomLeft.x - card.topLeft.x, card.bottomLeft.y - card.topLeft.y);
  if (room < roomOfAnother * std::min(width, height)) return false;
  if (std::max(width, height) < largeForFastLook * std::sqrt(size.width * size.height)) return true;
  TextRecognizer::Options options = TextRecognizer::Options::idCard;
  options.recognitionLevel = RecognitionLevel::fast;
  options.minimumTextHeight = 0;
  return !parts.recognize(picture, options).empty();
}

/// Whether a part is nearly all of a picture, so that it need not be cut out.
bool fills(const Quadrilateral& part, const Size& picture) {
  const Rect bounds = intersection(surrounding(part), {0, 0, picture.width, picture.height});
  return bounds.area() >= fillingShare * picture.width * picture.height;
}

/// Whether something is a card: it has its outline, or the text of a kind, or that of several cards.
bool isCard(const Region& region, const CardReading& card) {
  return region.isOutlined || card.kind || documentsIn(region.texts) > 1;
}

/// Why a picture on which text was found, or none, shows no card.
UnreadReason reasonOfNoCards(const ReadingParts& parts, const Bitmap& picture, bool hasText) {
  const UnreadReason reason = reasonOfMissingRecord(parts, {.bitmap = picture}, hasText);
  return reason == UnreadReason::noNumberFound ? UnreadReason::noCardFound : reason;
}

/// All cards on a picture but those that are painted over, whose outlines are among those given.
CardsReading readRegions(const ReadingParts& parts, const Bitmap& picture, const std::vector<Quadrilateral>& outlines) {
  // A small card's print is a small share of the page.
  TextRecognizer::Options options = TextRecognizer::Options::idCard;
  options.minimumTextHeight = 0;
  const Observations texts = textsOn(parts, {.bitmap = picture}, options);
  const std::vector<Region> regions = regionsOf(parts, picture, outlines, texts);
  if (regions.size() == 1 && !regions.front().isOutlined && regions.front().texts.size() == texts.size() &&
      fills(regions.front().corners, picture.size())) {
    CardReading card = readCardWith(parts, {.bitmap = picture}, texts);
    card.corners = renamed(regions.front().corners, card.reading.report.turned);
    if (isCard(regions.front(), card)) return {.cards = {std::move(card)}};
    return {.cards = {}, .unreadReason = reasonOfNoCards(parts, picture, true)};
  }
  CardsReading found;
  for (const Region& region : regions)
    if (CardReading card = readRegion(parts, picture, region); isCard(region, card))
      found.cards.push_back(std::move(card));
  if (found.cards.empty()) found.unreadReason = reasonOfNoCards(parts, picture, !texts.empty());
  return found;
}

}  // namespace

CardsReading readCards(const ReadingParts& parts, const Image& image) {
  if (!image.bitmap || !isUsable(image)) throw OCRError::invalidImage();
  parts.debugSaveImage(image, "多卡-原图");
  const Bitmap picture = uprightBitmap(*image.bitmap, image.orientation);
  ReadingParts within = parts;
  within.origin = {.picture = picture};
  const std::vector<Quadrilateral> outlines = parts.preprocessor.cardOutlines(picture);
  CardsReading found;
  if (auto first = firstCard(within, picture, outlines)) {
    const Bitmap rest = paintedOver(picture, grown(first->corners, marginOfPaint));
    if (mayShowMore(within, rest, first->corners)) found.cards = readRegions(within, rest, outlines).cards;
    found.cards.push_back(*std::move(first));
  } else {
    found = readRegions(within, picture, outlines);
  }
  OCRLogger::info([&] { return formatted("图片中找到 {} 个卡片区域", found.cards.size()); });
  sortInReadingOrder(found.cards);
  markPair(found.cards);
  return found;
}

}  // namespace pravik
