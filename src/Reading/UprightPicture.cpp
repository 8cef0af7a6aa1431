#include "Reading/UprightPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// Lines of one text are no further apart than this in degrees, though the picture was taken from the side.
constexpr double sameDirection = 15;
/// So many degrees off level a picture is read as it lies: the straightening and the reading of lines bear them.
constexpr double bearableTilt = 10;
/// What a picture that is turned by an odd angle keeps around its text, so that the card is whole though only some of
/// it was read: at least these shares of the text's longer side and of the picture's shorter side.
constexpr double textMargin = 0.5;
constexpr double pictureMargin = 0.25;

double apart(double one, double other) {
  return std::remainder(one - other, 360);
}

/// A rectangle that lies along a direction.
struct Extent {
  double left = std::numeric_limits<double>::infinity();
  double right = -left;
  double top = left;
  double bottom = -left;

  /// Takes in what reaches so far to either side of a point along the direction.
  void add(const Point& point, double reach = 0) {
    left = std::min(left, point.x - reach);
    right = std::max(right, point.x + reach);
    top = std::min(top, point.y);
    bottom = std::max(bottom, point.y);
  }
};

/// The surroundings of the text in a picture, which runs so many degrees clockwise from level: the corners of a
/// rectangle along it, in pixels from the top left.
Quadrilateral surroundings(const Size& size, double degrees, const Observations& observations) {
  const double cosine = std::cos(degrees * std::numbers::pi / 180);
  const double sine = std::sin(degrees * std::numbers::pi / 180);
  const auto along = [&](double x, double y) { return Point{x * cosine + y * sine, y * cosine - x * sine}; };
  const auto corner = [&](double x, double y) { return Point{x * cosine - y * sine, x * sine + y * cosine}; };
  Extent whole, text;
  for (const double x : {0.0, size.width})
    for (const double y : {0.0, size.height}) whole.add(along(x, y));
  for (const Observation& block : observations) {
    const Rect box = inPixels(flipped(block.boundingBox), size);
    text.add(along(box.midX(), box.midY()), std::hypot(box.width, box.height) / 2);
  }
  const double around = std::max(textMargin * std::max(text.right - text.left, text.bottom - text.top),
                                 pictureMargin * std::min(size.width, size.height));
  const double left = std::max(whole.left, text.left - around);
  const double right = std::min(whole.right, text.right + around);
  const double top = std::max(whole.top, text.top - around);
  const double bottom = std::min(whole.bottom, text.bottom + around);
  return {.topLeft = corner(left, top),
          .topRight = corner(right, top),
          .bottomLeft = corner(left, bottom),
          .bottomRight = corner(right, bottom)};
}

}  // namespace

std::optional<double> prevailingDirection(const Observations& observations) {
  struct Vote {
    double direction;
    double weight;
  };
  std::vector<Vote> votes;
  double all = 0;
  for (const Observation& block : observations) {
    if (!block.direction) continue;
    votes.push_back({*block.direction, block.confidence * static_cast<double>(characterCount(block.text))});
    all += votes.back().weight;
  }
  Vote best{0, 0};
  for (const Vote& vote : votes) {
    double weight = 0, deviation = 0;
    for (const Vote& other : votes) {
      const double difference = apart(other.direction, vote.direction);
      if (std::abs(difference) > sameDirection) continue;
      weight += other.weight;
      deviation += other.weight * difference;
    }
    if (weight > best.weight) best = {vote.direction + deviation / weight, weight};
  }
  if (2 * best.weight <= all) return std::nullopt;
  return apart(best.direction, 0);
}

std::optional<TurnedPicture> turnedUpright(const ReadingParts& parts, const Image& image,
                                           const Observations& observations) {
  if (parts.turned != 0 || !image.bitmap) return std::nullopt;
  const std::optional<double> direction = prevailingDirection(observations);
  if (!direction || std::abs(*direction) <= bearableTilt || !parts.goesOn()) return std::nullopt;

  const Bitmap bitmap = uprightBitmap(*image.bitmap, image.orientation);
  const int quarters = static_cast<int>(std::lround(-*direction / 90) + 4) % 4;
  const bool isRightAngle = std::abs(std::remainder(*direction, 90)) <= bearableTilt;
  constexpr std::array turns{ImageOrientation::up, ImageOrientation::right, ImageOrientation::down,
                             ImageOrientation::left};
  const Quadrilateral corners =
      isRightAngle ? renamed(cornersOf({0, 0, bitmap.size().width, bitmap.size().height}), 90 * quarters)
                   : surroundings(bitmap.size(), *direction, observations);
  const std::optional<Bitmap> turned = isRightAngle
                                           ? uprightBitmap(bitmap, turns.at(static_cast<std::size_t>(quarters)))
                                           : parts.preprocessor.straightened(bitmap, corners);
  if (!turned) return std::nullopt;
  ReadingParts onTurned = parts.onPart(corners, turned->size());
  onTurned.turned = isRightAngle ? 90 * quarters : static_cast<int>(std::lround(360 - *direction)) % 360;
  OCRLogger::info([&] { return formatted("图片方向矫正: 顺时针旋转 {} 度", onTurned.turned); });
  return TurnedPicture{.image = {.bitmap = turned}, .parts = std::move(onTurned)};
}

}  // namespace pravik
