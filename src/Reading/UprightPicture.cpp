#include "Reading/UprightPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
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
/// What a picture that is turned by an odd angle keeps around its text, as a share of the text's longer side: the
/// outline of a card of which little was read.
constexpr double margin = 0.5;

double apart(double one, double other) {
  return std::remainder(one - other, 360);
}

/// Everything in pixels from the top left, along the text and across it.
struct Extent {
  Point least{1e9, 1e9};
  Point most{-1e9, -1e9};

  void add(double along, double across) {
    least = {std::min(least.x, along), std::min(least.y, across)};
    most = {std::max(most.x, along), std::max(most.y, across)};
  }
};

/// A picture seen along a direction.
class TurnedView {
 public:
  explicit TurnedView(double degrees)
      : cosine_(std::cos(degrees * std::numbers::pi / 180)), sine_(std::sin(degrees * std::numbers::pi / 180)) {}

  void add(Extent& extent, const Rect& area) const {
    for (const double x : {area.x, area.maxX()})
      for (const double y : {area.y, area.maxY()}) extent.add(x * cosine_ + y * sine_, y * cosine_ - x * sine_);
  }
  Point corner(double along, double across, double height) const {
    return {along * cosine_ - across * sine_, height - (along * sine_ + across * cosine_)};
  }

 private:
  double cosine_;
  double sine_;
};

/// The surroundings of the text in a picture, turned against the clock.
std::optional<Bitmap> turnedBack(const ReadingParts& parts, const Bitmap& bitmap, double degrees,
                                 const Observations& observations) {
  const TurnedView view(degrees);
  Extent whole, text;
  view.add(whole, {0, 0, bitmap.size().width, bitmap.size().height});
  for (const Observation& block : observations) view.add(text, inPixels(flipped(block.boundingBox), bitmap.size()));
  const double around = margin * std::max(text.most.x - text.least.x, text.most.y - text.least.y);
  const double left = std::max(whole.least.x, text.least.x - around);
  const double right = std::min(whole.most.x, text.most.x + around);
  const double top = std::max(whole.least.y, text.least.y - around);
  const double bottom = std::min(whole.most.y, text.most.y + around);
  const auto corner = [&](double along, double across) { return view.corner(along, across, bitmap.height()); };
  return parts.preprocessor.straightened(bitmap, {.topLeft = corner(left, top),
                                                  .topRight = corner(right, top),
                                                  .bottomLeft = corner(left, bottom),
                                                  .bottomRight = corner(right, bottom)});
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
  const std::optional<Bitmap> turned = isRightAngle
                                           ? uprightBitmap(bitmap, turns.at(static_cast<std::size_t>(quarters)))
                                           : turnedBack(parts, bitmap, *direction, observations);
  if (!turned) return std::nullopt;
  TurnedPicture upright{.image = {.bitmap = turned}, .parts = parts};
  upright.parts.turned = isRightAngle ? 90 * quarters : static_cast<int>(std::lround(360 - *direction)) % 360;
  OCRLogger::info([&] { return formatted("图片方向矫正: 顺时针旋转 {} 度", upright.parts.turned); });
  return upright;
}

}  // namespace pravik
