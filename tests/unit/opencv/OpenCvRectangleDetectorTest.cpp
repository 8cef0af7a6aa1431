#include "backends/opencv/finder/OpenCvRectangleDetector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

#include "Desk.h"
#include "backends/opencv/Mat.h"

namespace pravik {
namespace {

using test::cardAt;
using test::CardCorners;
using test::Desk;

const cv::Scalar darkWood(60, 90, 130), grey(128, 128, 128), paleGrey(214, 210, 208), black(25, 25, 25);

/// What the bank-card pipeline asks for.
RectangleRequest stillRequest() {
  return {.maximumObservations = 5,
          .minimumAspectRatio = 0.3F,
          .maximumAspectRatio = 1.0F,
          .quadratureTolerance = 45,
          .minimumSize = 0.3F,
          .minimumConfidence = 0.5F};
}

/// What the live scanner asks for.
RectangleRequest videoRequest() {
  return {.maximumObservations = 5,
          .minimumAspectRatio = 0.5F,
          .maximumAspectRatio = 4.0F,
          .quadratureTolerance = 40,
          .minimumSize = 0.1F,
          .minimumConfidence = 0.1F};
}

std::vector<RectangleObservation> detect(const Bitmap& bitmap, const RectangleRequest& request = stillRequest()) {
  return OpenCvRectangleDetector().detect(bitmap, request);
}

/// The greatest distance of a corner from the true one of the same name, as a share of the card's length.
double cornerError(const RectangleObservation& found, const CardCorners& truth, const Bitmap& bitmap) {
  const auto& c = found.corners;
  const Point corners[] = {c.topLeft, c.topRight, c.bottomRight, c.bottomLeft};
  double worst = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const cv::Point2d pixel(corners[i].x * bitmap.width(), (1 - corners[i].y) * bitmap.height());
    worst = std::max(worst, cv::norm(pixel - truth[i]));
  }
  return worst / cv::norm(truth[1] - truth[0]);
}

void expectOnly(const Bitmap& bitmap, const CardCorners& truth, const std::string& what) {
  for (const auto& request : {stillRequest(), videoRequest()}) {
    const auto found = detect(bitmap, request);
    ASSERT_EQ(found.size(), 1U) << what;
    const auto& [corners, box, confidence] = found[0];
    EXPECT_LT(cornerError(found[0], truth, bitmap), 0.01) << what;
    EXPECT_GE(confidence, 0.5F) << what;
    EXPECT_LE(confidence, 1.0F) << what;
    EXPECT_DOUBLE_EQ(box.x, std::min(corners.topLeft.x, corners.bottomLeft.x)) << what;
    EXPECT_DOUBLE_EQ(box.maxY(), std::max(corners.topLeft.y, corners.topRight.y)) << what;
  }
}

TEST(OpenCvRectangleDetector, FindsACardTurnedAnyWayUpToHalfAQuarterTurn) {
  for (const double degrees : {-40.0, -25.0, -8.0, -1.0, 0.0, 3.0, 15.0, 30.0, 40.0}) {
    const CardCorners card = cardAt({620, 470}, 640, degrees, 0.08);
    expectOnly(Desk(1200, 900, darkWood).card(card).photo(), card, "turned by " + std::to_string(degrees));
  }
}

TEST(OpenCvRectangleDetector, FindsACardStandingUpright) {
  const CardCorners lying = cardAt({450, 610}, 700, 84);
  // The corner that a person sees at the top left is the card's own bottom left.
  expectOnly(Desk(900, 1200, grey).card(lying).photo(), {lying[3], lying[0], lying[1], lying[2]}, "upright");
}

TEST(OpenCvRectangleDetector, FindsACardInHardLightAndSurroundings) {
  const CardCorners card = cardAt({640, 500}, 700, 6, 0.1);
  cv::Mat shades;
  cv::cvtColor(asMat(Desk(1200, 900, darkWood).card(card).photo()), shades, cv::COLOR_BGRA2GRAY);
  const std::pair<const char*, Bitmap> cases[] = {
      {"hardly darker than the desk", Desk(1200, 900, paleGrey).card(card, {206, 200, 196}).photo()},
      {"darker than the desk", Desk(1200, 900, {235, 235, 235}).card(card, {70, 40, 40}).photo()},
      {"light falling off", Desk(1200, 900, grey).card(card).light(0.25).photo()},
      {"a dark photo", Desk(1200, 900, black).card(card, {60, 58, 55}).photo(5)},
      {"without colours", toBitmap(shades)},
      {"grainy", Desk(1200, 900, darkWood).card(card).photo(20)},
      {"on striped cloth", Desk(1200, 900, darkWood).stripes(36, 80, {140, 170, 200}).card(card).photo()},
      {"among straight things", Desk(1200, 900, grey).clutter(40).card(card).photo()},
  };
  for (const auto& [what, photo] : cases) expectOnly(photo, card, what);
}

TEST(OpenCvRectangleDetector, FindsTheSameInEveryResolution) {
  for (const double size : {0.4, 1.0, 2.0, 3.3}) {
    const CardCorners card = cardAt({620 * size, 430 * size}, 560 * size, -7, 0.06);
    const Bitmap photo = Desk(cvRound(1200 * size), cvRound(900 * size), darkWood).card(card).photo();
    expectOnly(photo, card, "size " + std::to_string(size));
  }
}

TEST(OpenCvRectangleDetector, FindsNothingWhereThereIsNoCard) {
  const CardCorners whole = {cv::Point2d(0, 0), {1011, 0}, {1011, 638}, {0, 638}};
  const std::pair<const char*, Bitmap> cases[] = {
      {"one pixel", Desk(1, 1, grey).photo()},
      {"a thin line", Desk(3000, 2, grey).photo()},
      {"a plain desk", Desk(1200, 900, grey).photo()},
      {"a plain desk without noise", Desk(1200, 900, grey).photo(0)},
      {"nothing but noise", Desk(1200, 900, grey).photo(60)},
      {"striped cloth", Desk(1200, 900, darkWood).stripes(50, 85, {140, 170, 200}).photo()},
      {"checked cloth",
       Desk(1200, 900, darkWood).stripes(90, 2, {140, 170, 200}).stripes(90, 92, {140, 170, 200}).photo()},
      {"straight things", Desk(1200, 900, grey).clutter(60).photo()},
      {"the scan of a card that fills the picture", Desk(1011, 638, grey).card(whole).photo()},
  };
  for (const auto& [what, photo] : cases) EXPECT_TRUE(detect(photo).empty()) << what;
}

TEST(OpenCvRectangleDetector, HonoursTheLimitsOfTheRequest) {
  // 400 of 900 pixels high: its shorter side is 0.28 of the picture's shorter side.
  const Bitmap small = Desk(1200, 900, darkWood).card(cardAt({500, 400}, 400, 5)).photo();
  // Seen at a slant, the corners are up to 17 degrees from right angles.
  const CardCorners slanted = {cv::Point2d(420, 250), {800, 250}, {900, 610}, {310, 610}};
  const Bitmap tilted = Desk(1200, 900, darkWood).card(slanted).photo();
  const struct {
    const char* what;
    const Bitmap& photo;
    float RectangleRequest::* limit;
    float within, beyond;
  } cases[] = {
      {"size", small, &RectangleRequest::minimumSize, 0.26F, 0.3F},
      {"least aspect", small, &RectangleRequest::minimumAspectRatio, 0.5F, 0.7F},
      {"greatest aspect", small, &RectangleRequest::maximumAspectRatio, 0.7F, 0.55F},
      {"confidence", small, &RectangleRequest::minimumConfidence, 0.5F, 1.1F},
      {"angles", tilted, &RectangleRequest::quadratureTolerance, 20, 14},
  };
  for (const auto& [what, photo, limit, within, beyond] : cases) {
    RectangleRequest request = videoRequest();
    request.*limit = within;
    EXPECT_EQ(detect(photo, request).size(), 1U) << what;
    request.*limit = beyond;
    EXPECT_TRUE(detect(photo, request).empty()) << what;
  }
  RectangleRequest request = videoRequest();
  request.maximumObservations = 0;
  EXPECT_TRUE(detect(small, request).empty());
}

TEST(OpenCvRectangleDetector, ListsSeveralCardsTheMostConfidentFirst) {
  const CardCorners clear = cardAt({330, 300}, 460, 4), faint = cardAt({850, 640}, 460, -5);
  const Bitmap photo = Desk(1200, 900, paleGrey).card(faint, {206, 202, 200}).card(clear, {120, 60, 40}).photo();
  RectangleRequest request = videoRequest();
  const auto found = detect(photo, request);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_GE(found[0].confidence, found[1].confidence);
  EXPECT_LT(std::min(cornerError(found[0], clear, photo), cornerError(found[1], clear, photo)), 0.01);
  request.maximumObservations = 1;
  ASSERT_EQ(detect(photo, request).size(), 1U);
  EXPECT_EQ(detect(photo, request)[0].confidence, found[0].confidence);
}

}  // namespace
}  // namespace pravik
