#include "Reading/PictureWarnings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "Platform/Projection.h"
#include "Reading/DisplayGrid.h"
#include "Reading/PicturePart.h"

namespace pravik {
namespace {

/// ISO/IEC 7810, ID-1.
constexpr double cardWidth = 85.6;
constexpr double cardHeight = 54;
/// The usual height of a block of text in millimetres, with the room that a text engine leaves around it.
constexpr double textHeight = 5;
/// What is looked at beyond the outermost text when the outline is unknown, in heights of text.
constexpr double roomAroundText = 0.5;
/// No part is looked at as if it were longer, in millimetres: that is a page, and specks are no text.
constexpr double longestPart = 300;

/// Dots a millimetre at which light and colour are looked at: print is not told from its ground, patches of light are.
constexpr double surveyScale = 2;
/// An outline may lie so much beside the card's edge, in millimetres.
constexpr double rim = 2;

/// Beyond this many dots a millimetre edges are not measured more finely.
constexpr double finestScale = 12;
/// A window of about a character, in millimetres, and how many of those with the most contrast are measured.
constexpr int windowSide = 3;
constexpr std::size_t mostWindows = 40;
constexpr std::size_t fewestWindows = 6;
/// Levels between print and ground below which noise makes edges.
constexpr int leastContrast = 30;
/// An edge is as wide as its contrast divided by its steepest slope. Strokes of small print are 0.2 to 0.3 mm wide.
constexpr double blurredEdge = 0.35;
/// A small picture that is sharp has edges of two dots.
constexpr double sharpEdgeDots = 3.2;
/// The share of windows that are the sharpest.
constexpr double sharpest = 0.25;

/// Luma from which on nothing is left of the print.
constexpr int whiteLevel = 250;
constexpr double overexposedShare = 0.35;
/// Square millimetres of a patch of light: a group of four digits.
constexpr double glareArea = 75;
/// The brightest hundredth of a card lies above this, with print and ground apart by more than the noise.
constexpr int darkLevel = 75;

constexpr double leastDotsPerMillimetre = 4;

/// Share of the picture's longer side within which an outline is at the edge, that of a text's height for text.
constexpr double atTheEdge = 0.005;
constexpr double cutText = 0.15;
/// How far the ratio of the sides may be from a card's when it is seen at an angle.
constexpr double shapeTolerance = 0.05;
/// The ground around text is followed in millimetres by strips of so many places, of which so many are ground. It has
/// ended when it is missing on so many strips in turn; print does not take as much room.
constexpr double stripStep = 0.5;
constexpr int stripPlaces = 32;
constexpr int leastAlike = 8;
constexpr int mostForeign = 3;
/// Levels by which the ground differs from strip to strip.
constexpr int sameGround = 10;

/// Colours differ by at least this share of their luma.
constexpr double leastChroma = 0.042;

/// Of cells of so many places a side, and of so much light at least, so that noise has no colour.
constexpr int cellSide = 4;
constexpr int darkestTint = 64;
/// How much a lamp tints what is grey.
constexpr double strongestLamp = 0.25;

/// The mean logarithm of the power of a wave over that of its neighbours: 2 for noise and print. A display's grid is
/// the same all over the card, print is not.
constexpr double gridPower = 4.5;

double distance(const Point& a, const Point& b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

double shorterSide(const Quadrilateral& text) {
  return std::min(distance(text.topLeft, text.topRight), distance(text.topLeft, text.bottomLeft));
}

bool isShapeOfCard(const Size& size) {
  const double ratio = std::max(size.width, size.height) / std::max(1.0, std::min(size.width, size.height));
  return std::abs(ratio * cardHeight / cardWidth - 1) < shapeTolerance;
}

bool reachesEdge(const Rect& bounds, const Size& picture, double room) {
  return bounds.x < room || bounds.y < room || bounds.maxX() > picture.width - room ||
         bounds.maxY() > picture.height - room;
}

/// Colours of a part in a raster of `surveyScale`.
struct Survey {
  int width = 0;
  int height = 0;
  std::vector<Colour> colours;

  const Colour& at(int x, int y) const { return colours[static_cast<std::size_t>(y * width + x)]; }
};

Survey surveyed(const Bitmap& picture, const PicturePart& part) {
  Survey survey{std::max(1, static_cast<int>(part.size.width * surveyScale)),
                std::max(1, static_cast<int>(part.size.height * surveyScale)),
                {}};
  survey.colours.reserve(static_cast<std::size_t>(survey.width) * static_cast<std::size_t>(survey.height));
  for (int y = 0; y < survey.height; ++y)
    for (int x = 0; x < survey.width; ++x)
      survey.colours.push_back(colourAt(picture, part.at((x + 0.5) / survey.width, (y + 0.5) / survey.height)));
  return survey;
}

/// The value below which `share` of the values lie.
template <class Value>
Value quantile(std::vector<Value> values, double share) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::ranges::nth_element(values, place);
  return *place;
}

/// What `level` gives for every place of a survey.
template <class Level>
std::vector<int> levelsOf(const Survey& survey, Level level) {
  std::vector<int> levels(survey.colours.size());
  std::ranges::transform(survey.colours, levels.begin(), level);
  return levels;
}

double inSquareMillimetres(int places) {
  return places / (surveyScale * surveyScale);
}

bool isWhite(const Colour& colour) {
  // Light that blinds one channel only is coloured print.
  return std::max(std::min(colour.blue, colour.green), std::min(std::max(colour.blue, colour.green), colour.red)) >=
         whiteLevel;
}

/// Patches of white that hang together, in places of the survey.
struct Patch {
  int places = 0;
  PixelRect bounds;
};

std::vector<Patch> whitePatches(const Survey& survey) {
  std::vector<int> open = levelsOf(survey, isWhite);
  std::vector<Patch> patches;
  std::vector<int> reached;
  for (int start = 0; start < survey.width * survey.height; ++start) {
    int left = survey.width;
    int top = survey.height;
    int right = 0;
    int bottom = 0;
    int places = 0;
    const auto reach = [&](int x, int y) {
      if (x < 0 || y < 0 || x >= survey.width || y >= survey.height) return;
      const int place = y * survey.width + x;
      if (open[static_cast<std::size_t>(place)] == 0) return;
      open[static_cast<std::size_t>(place)] = 0;
      reached.push_back(place);
    };
    reach(start % survey.width, start / survey.width);
    while (!reached.empty()) {
      const int x = reached.back() % survey.width;
      const int y = reached.back() / survey.width;
      reached.pop_back();
      ++places;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
      reach(x - 1, y);
      reach(x + 1, y);
      reach(x, y - 1);
      reach(x, y + 1);
    }
    if (places > 0) patches.push_back({places, {left, top, right - left + 1, bottom - top + 1}});
  }
  return patches;
}

/// The rectangle on the picture around a patch.
Rect seenOn(const PicturePart& part, const Survey& survey, const PixelRect& patch) {
  const auto at = [&](int x, int y) {
    return part.at(static_cast<double>(x) / survey.width, static_cast<double>(y) / survey.height);
  };
  const int right = patch.x + patch.width;
  const int bottom = patch.y + patch.height;
  return surrounding({at(patch.x, patch.y), at(right, patch.y), at(patch.x, bottom), at(right, bottom)});
}

/// How much the colours of a part differ, or differ from grey under a lamp, as a share of their luma.
double chromaOf(const Survey& survey) {
  std::array<std::vector<double>, 2> tints;
  for (int top = 0; top + cellSide <= survey.height; top += cellSide)
    for (int left = 0; left + cellSide <= survey.width; left += cellSide) {
      Colour sum{0, 0, 0};
      for (int i = 0; i < cellSide * cellSide; ++i) {
        const Colour& one = survey.at(left + i % cellSide, top + i / cellSide);
        sum = {sum.blue + one.blue, sum.green + one.green, sum.red + one.red};
      }
      const double luma = std::max(sum.luma(), cellSide * cellSide * darkestTint);
      tints[0].push_back((sum.red - sum.green) / luma);
      tints[1].push_back((sum.blue - sum.green) / luma);
    }
  if (tints[0].empty()) return 1;
  double chroma = 0;
  for (const std::vector<double>& tint : tints)
    chroma =
        std::max({chroma, quantile(tint, 0.97) - quantile(tint, 0.03), std::abs(quantile(tint, 0.5)) - strongestLamp});
  return chroma;
}

/// The middles of the windows with the most contrast, as shares of the part.
std::vector<Point> windowsOf(const Survey& survey) {
  constexpr int side = windowSide * static_cast<int>(surveyScale);
  constexpr int border = static_cast<int>(rim * surveyScale);
  std::vector<std::pair<int, Point>> windows;
  for (int top = border; top + side + border <= survey.height; top += side)
    for (int left = border; left + side + border <= survey.width; left += side) {
      int darkest = 255;
      int brightest = 0;
      for (int i = 0; i < side * side; ++i) {
        const int luma = survey.at(left + i % side, top + i / side).luma();
        darkest = std::min(darkest, luma);
        brightest = std::max(brightest, luma);
      }
      // Light runs out softly around what it hides.
      if (brightest < whiteLevel && brightest - darkest >= leastContrast)
        windows.push_back(
            {darkest - brightest, {(left + side / 2.0) / survey.width, (top + side / 2.0) / survey.height}});
    }
  std::ranges::sort(windows, {}, &std::pair<int, Point>::first);
  windows.resize(std::min(windows.size(), mostWindows));
  std::vector<Point> middles;
  middles.reserve(windows.size());
  for (const auto& [contrast, middle] : windows) middles.push_back(middle);
  return middles;
}

/// The width of edges along rows, columns and both diagonals around a place of the picture, in steps of `step` pixels;
/// `side` is that of the window.
std::array<float, 4> edgeWidths(const Bitmap& picture, const Point& middle, int side, int step) {
  const double first = -0.5 * step * (side - 1);
  std::vector<float> lumas;
  lumas.reserve(static_cast<std::size_t>(side * side));
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x)
      lumas.push_back(
          static_cast<float>(colourAt(picture, {middle.x + first + x * step, middle.y + first + y * step}).luma()));
  const auto at = [&](int x, int y) { return lumas[static_cast<std::size_t>(y * side + x)]; };
  std::array<float, 4> widths{};
  for (int y = 0; y + 1 < side; ++y)
    for (int x = 0; x + 1 < side; ++x) {
      widths[0] = std::max(widths[0], std::abs(at(x + 1, y) - at(x, y)));
      widths[1] = std::max(widths[1], std::abs(at(x, y + 1) - at(x, y)));
      widths[2] = std::max(widths[2], std::abs(at(x + 1, y + 1) - at(x, y)) / std::numbers::sqrt2_v<float>);
      widths[3] = std::max(widths[3], std::abs(at(x, y + 1) - at(x + 1, y)) / std::numbers::sqrt2_v<float>);
    }
  const auto [low, high] = std::ranges::minmax(lumas);
  for (float& width : widths) width = (high - low) / std::max(width, 1.0F);
  return widths;
}

/// The width in pixels of the sharpest edges, in the direction in which they are the widest: a hand that moved leaves
/// those along its path. `scale` is in dots a millimetre. Absent with too little print to tell.
std::optional<double> edgeWidth(const Bitmap& picture, const PicturePart& part, const Survey& survey, double scale) {
  const std::vector<Point> windows = windowsOf(survey);
  if (windows.size() < fewestWindows) return std::nullopt;
  const int step = std::max(1, static_cast<int>(scale / finestScale));
  const int side = std::max(4, static_cast<int>(windowSide * scale / step));
  std::array<std::vector<float>, 4> widths;
  for (const Point& middle : windows) {
    const std::array<float, 4> measured = edgeWidths(picture, part.at(middle.x, middle.y), side, step);
    for (std::size_t i = 0; i < widths.size(); ++i) widths[i].push_back(measured[i]);
  }
  double widest = 0;
  for (const std::vector<float>& direction : widths)
    widest = std::max(widest, static_cast<double>(quantile(direction, sharpest)));
  return widest * step;
}

/// Whether the outline has a side on the picture's edge without being all of a card: a scan is cut along the card.
bool isCutOff(const Quadrilateral& outline, const Size& picture) {
  const double across = distance(outline.topLeft, outline.topRight) + distance(outline.bottomLeft, outline.bottomRight);
  const double down = distance(outline.topLeft, outline.bottomLeft) + distance(outline.topRight, outline.bottomRight);
  return reachesEdge(surrounding(outline), picture, atTheEdge * std::max(picture.width, picture.height)) &&
         !isShapeOfCard({across, down});
}

/// Whether the ground that text stands on goes on from `start` to the picture's edge by steps of `step`; `side` is half
/// of the strip that is looked at across the way.
bool groundReachesEdge(const Bitmap& picture, Point start, const Point& step, const Point& side, Colour ground) {
  int foreign = 0;
  const auto isInside = [&](const Point& p) {
    return p.x >= 0 && p.y >= 0 && p.x < picture.width() && p.y < picture.height();
  };
  for (Point place = start; isInside(place); place = {place.x + step.x, place.y + step.y}) {
    Colour sum{0, 0, 0};
    int alike = 0;
    for (int i = 0; i < stripPlaces; ++i) {
      const double share = 2 * (i + 0.5) / stripPlaces - 1;
      const Colour seen = colourAt(picture, {place.x + share * side.x, place.y + share * side.y});
      if (std::max({std::abs(seen.blue - ground.blue), std::abs(seen.green - ground.green),
                    std::abs(seen.red - ground.red)}) > sameGround)
        continue;
      ++alike;
      sum = {sum.blue + seen.blue, sum.green + seen.green, sum.red + seen.red};
    }
    foreign = alike < leastAlike ? foreign + 1 : 0;
    if (foreign == mostForeign) return false;
    // Light changes along the way.
    if (foreign == 0) ground = {sum.blue / alike, sum.green / alike, sum.red / alike};
  }
  return true;
}

/// The same for the part around the text of a card whose outline is unknown.
bool isCutOff(const Bitmap& picture, const PicturePart& part, const Survey& survey) {
  const Rect bounds = surrounding(part.corners);
  const auto usual = [&](int Colour::* channel) { return quantile(levelsOf(survey, channel), 0.5); };
  const Colour ground{usual(&Colour::blue), usual(&Colour::green), usual(&Colour::red)};
  const double step = std::max(1.0, stripStep * bounds.width / part.size.width);
  const Point middle{bounds.midX(), bounds.midY()};
  const Point across{0, 0.4 * bounds.height};
  const Point down{0.4 * bounds.width, 0};
  return !isShapeOfCard(picture.size()) &&
         (groundReachesEdge(picture, {bounds.x, middle.y}, {-step, 0}, across, ground) ||
          groundReachesEdge(picture, {bounds.maxX(), middle.y}, {step, 0}, across, ground) ||
          groundReachesEdge(picture, {middle.x, bounds.y}, {0, -step}, down, ground) ||
          groundReachesEdge(picture, {middle.x, bounds.maxY()}, {0, step}, down, ground));
}

/// Where the card is; absent when neither its outline nor its text tells.
std::optional<PicturePart> partOf(const PicturedCard& card) {
  if (card.outline) {
    const Quadrilateral& corners = *card.outline;
    const bool isUpright = distance(corners.topLeft, corners.topRight) < distance(corners.topLeft, corners.bottomLeft);
    return PicturePart{corners, isUpright ? Size{cardHeight, cardWidth} : Size{cardWidth, cardHeight}};
  }
  if (card.texts.empty()) return std::nullopt;
  const Rect picture{0, 0, card.picture.size().width, card.picture.size().height};
  const Rect first = surrounding(card.texts.front());
  std::vector<double> heights;
  double left = first.x;
  double top = first.y;
  double right = first.maxX();
  double bottom = first.maxY();
  for (const Quadrilateral& text : card.texts) {
    const Rect bounds = surrounding(text);
    left = std::min(left, bounds.x);
    right = std::max(right, bounds.maxX());
    top = std::min(top, bounds.y);
    bottom = std::max(bottom, bounds.maxY());
    heights.push_back(shorterSide(text));
  }
  const double height = quantile(std::move(heights), 0.5);
  const double room = roomAroundText * height;
  const Rect around =
      intersection(picture, {left - room, top - room, right - left + 2 * room, bottom - top + 2 * room});
  if (!(around.area() >= 1 && height > 0)) return std::nullopt;
  const double scale = std::max(height / textHeight, std::max(around.width, around.height) / longestPart);
  return PicturePart{cornersOf(around), {around.width / scale, around.height / scale}};
}

/// All of a picture, as if it were as wide as a card.
PicturePart whole(const Size& picture) {
  return {cornersOf({0, 0, picture.width, picture.height}),
          {cardWidth, std::min(cardWidth * picture.height / picture.width, longestPart)}};
}

}  // namespace

PictureFindings lookedAt(const PicturedCard& card) {
  const std::optional<PicturePart> placed = partOf(card);
  const PicturePart part = placed.value_or(whole(card.picture.size()));
  const Survey survey = surveyed(card.picture, part);
  PictureFindings findings;
  const double scale = std::max(distance(part.corners.topLeft, part.corners.topRight) / part.size.width,
                                distance(part.corners.topLeft, part.corners.bottomLeft) / part.size.height);
  if (placed) findings.dotsPerMillimetre = scale;

  const double white = inSquareMillimetres(static_cast<int>(std::ranges::count_if(survey.colours, isWhite)));
  const bool isOverexposed = white > overexposedShare * cardWidth * cardHeight;
  const bool isDark = quantile(levelsOf(survey, &Colour::luma), 0.99) < darkLevel;
  if (!isOverexposed)
    for (const Patch& patch : whitePatches(survey)) {
      if (inSquareMillimetres(patch.places) >= glareArea) findings.glare.push_back(seenOn(part, survey, patch.bounds));
    }
  const std::optional<double> edge = edgeWidth(card.picture, part, survey, scale);
  const auto warnIf = [&](bool does, ReadingWarning warning) {
    if (does) findings.warnings.push_back(warning);
  };
  warnIf(placed && edge && *edge > std::max(blurredEdge * scale, sharpEdgeDots), ReadingWarning::blurred);
  warnIf(!findings.glare.empty(), ReadingWarning::glare);
  warnIf(isDark, ReadingWarning::dark);
  warnIf(isOverexposed, ReadingWarning::overexposed);
  warnIf(placed && scale < leastDotsPerMillimetre, ReadingWarning::tooSmall);
  warnIf(card.outline ? isCutOff(*card.outline, card.picture.size())
                      : std::ranges::any_of(card.texts,
                                            [&](const auto& text) {
                                              return reachesEdge(surrounding(text), card.picture.size(),
                                                                 cutText * shorterSide(text));
                                            }) ||
                            (placed && !isDark && !isOverexposed && isCutOff(card.picture, part, survey)),
         ReadingWarning::cutOff);
  // What has no colours by its format need not be a copy.
  warnIf(card.picture.format() != PixelFormat::grey8 && placed && !isDark && !isOverexposed &&
             chromaOf(survey) < leastChroma,
         ReadingWarning::greyCopy);
  warnIf(displayGrid(card.picture, part) > gridPower, ReadingWarning::screen);
  return findings;
}

}  // namespace pravik
