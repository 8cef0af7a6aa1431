#include "Reading/CardCrops.h"

#include <algorithm>
#include <string_view>
#include <variant>

#include "Platform/Projection.h"

namespace pravik {
namespace {

/// Shares of the card's width and height, from its upper left (GA 448-2013): the portrait, and where the number begins
/// and ends and how high its middle lies.
constexpr Rect portraitArea{0.65, 0.13, 0.3, 0.61};
constexpr double numberLeft = 0.322, numberRight = 0.873, numberMiddle = 0.876;
constexpr double cardAspect = 85.6 / 54;
/// A row is cut with so much around it, as a share of its height.
constexpr double marginOfRow = 0.25;

const FieldReport* fieldNamed(const ReadingReport& report, std::string_view name) {
  const auto field = std::ranges::find(report.fields, name, &FieldReport::name);
  return field != report.fields.end() && field->corners ? &*field : nullptr;
}

Point along(const Point& from, const Point& step, double share) {
  return {from.x + share * step.x, from.y + share * step.y};
}

/// The portrait side around its number, seen from straight above.
Quadrilateral cardAround(const Quadrilateral& number) {
  const double span = numberRight - numberLeft;
  const Point across{(number.topRight.x - number.topLeft.x) / span, (number.topRight.y - number.topLeft.y) / span};
  const Point down{-across.y / cardAspect, across.x / cardAspect};
  const Point start =
      along(number.topLeft, {number.bottomLeft.x - number.topLeft.x, number.bottomLeft.y - number.topLeft.y}, 0.5);
  const Point topLeft = along(along(start, across, -numberLeft), down, -numberMiddle);
  const Point topRight = along(topLeft, across, 1);
  return {topLeft, topRight, along(topLeft, down, 1), along(topRight, down, 1)};
}

/// A row with what surrounds it.
Quadrilateral withMargin(const Quadrilateral& row) {
  return Projection::onto(row, {1, 1})(cornersOf({0, -marginOfRow, 1, 1 + 2 * marginOfRow}));
}

}  // namespace

CardCrops cardCrops(const ImagePreprocessor& preprocessor, const Bitmap& picture, const Reading& reading) {
  CardCrops crops;
  if (!reading.record) return crops;
  const bool isPortraitSide = std::holds_alternative<IDCardFrontInfo>(*reading.record);
  const FieldReport* number = fieldNamed(reading.report, isPortraitSide ? "idNumber" : "cardNumber");
  if (number != nullptr) crops.number = preprocessor.straightened(picture, withMargin(*number->corners));

  std::optional<Quadrilateral> card = reading.report.outline;
  if (!card && isPortraitSide && number != nullptr) card = cardAround(*number->corners);
  if (!card) return crops;
  crops.card = preprocessor.straightened(picture, *card);
  if (isPortraitSide)
    crops.portrait = preprocessor.straightened(picture, Projection::onto(*card, {1, 1})(cornersOf(portraitArea)));
  return crops;
}

}  // namespace pravik
