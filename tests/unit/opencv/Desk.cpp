#include "Desk.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "backends/opencv/Mat.h"

namespace pravik::test {
namespace {

constexpr double aspect = 85.60 / 53.98;
// Things are drawn flat at this many pixels a millimetre and then laid on the desk.
constexpr double scale = 12;

/// A flat picture as it lies on the desk; behind it is nothing, or more of what its edges show.
cv::Mat laid(const cv::Mat& flat, const CardCorners& corners, cv::Size desk, cv::BorderTypes behind) {
  const auto width = static_cast<float>(flat.cols), height = static_cast<float>(flat.rows);
  const std::array<cv::Point2f, 4> from = {{{0, 0}, {width, 0}, {width, height}, {0, height}}};
  const std::array<cv::Point2f, 4> to = {corners[0], corners[1], corners[2], corners[3]};
  cv::Mat seen;
  cv::warpPerspective(flat, seen, cv::getPerspectiveTransform(from.data(), to.data()), desk, cv::INTER_LINEAR, behind);
  return seen;
}

/// White where a card of this size is.
cv::Mat roundedMask(cv::Size size, int radius) {
  cv::Mat mask = cv::Mat::zeros(size, CV_8UC3);
  const cv::Rect middle({radius, radius}, size - cv::Size(2 * radius, 2 * radius));
  cv::rectangle(mask, middle, cv::Scalar::all(255), cv::FILLED);
  cv::rectangle(mask, middle, cv::Scalar::all(255), 2 * radius);  // thick lines end round
  return mask;
}

/// Rows of words, as print looks from far away.
void print(cv::Mat& flat) {
  const int word = flat.cols / 20, line = flat.rows / 10;
  for (int y = line; y < 8 * line; y += line)
    for (int x = word; x < 12 * word; x += word + word / 2 + y % 7)
      cv::rectangle(flat, {x, y, word, line / 3}, {90, 60, 50}, cv::FILLED);
}

}  // namespace

CardCorners cardAt(cv::Point2d middle, double width, double degrees, double tilt) {
  const double angle = degrees * CV_PI / 180, height = width / aspect;
  const cv::Point2d along(std::cos(angle), std::sin(angle)), down(-along.y, along.x);
  const cv::Point2d top = along * (1 - tilt) * width / 2, bottom = along * width / 2, half = down * height / 2;
  return {middle - half - top, middle - half + top, middle + half + bottom, middle + half - bottom};
}

Desk::Desk(int width, int height, cv::Scalar color) : picture_(height, width, CV_8UC3, color) {}

Desk& Desk::card(const CardCorners& corners, cv::Scalar color) {
  cv::Mat flat(cvRound(53.98 * scale), cvRound(85.60 * scale), CV_8UC3, color);
  print(flat);
  cv::ellipse(flat, {cvRound(0.8 * flat.cols), cvRound(0.42 * flat.rows)}, {90, 120}, 0, 0, 360, {80, 90, 120},
              cv::FILLED);
  const cv::Mat mask = roundedMask(flat.size(), cvRound(3.18 * scale));
  const cv::Mat place = laid(mask, corners, picture_.size(), cv::BORDER_CONSTANT);

  cv::Mat shadow;
  const double reach = cv::norm(corners[1] - corners[0]) / 150;
  cv::GaussianBlur(place, shadow, {}, reach);
  cv::warpAffine(shadow, shadow, cv::Matx23d(1, 0, reach, 0, 1, reach), shadow.size());
  picture_ -= shadow * 0.16;
  laid(flat, corners, picture_.size(), cv::BORDER_REPLICATE).copyTo(picture_, place > 127);
  return *this;
}

Desk& Desk::stripes(double pitch, double degrees, cv::Scalar color) {
  const double angle = degrees * CV_PI / 180;
  const cv::Vec3d half = cv::Vec3d(color[0], color[1], color[2]) / 2;
  for (int y = 0; y < picture_.rows; ++y)
    for (int x = 0; x < picture_.cols; ++x)
      if (std::fmod(1e5 + x * std::cos(angle) + y * std::sin(angle), pitch) < pitch / 3)
        picture_.at<cv::Vec3b>(y, x) = cv::Vec3d(picture_.at<cv::Vec3b>(y, x)) / 2 + half;
  return *this;
}

Desk& Desk::clutter(int lines) {
  cv::RNG random(5);
  for (int i = 0; i < lines; ++i) {
    const cv::Point from(random.uniform(0, picture_.cols), random.uniform(0, picture_.rows));
    const cv::Point to(random.uniform(0, picture_.cols), random.uniform(0, picture_.rows));
    cv::line(picture_, from, to, cv::Scalar::all(random.uniform(0, 255)), random.uniform(1, picture_.cols / 100),
             cv::LINE_AA);
  }
  return *this;
}

Desk& Desk::light(double darkest) {
  for (int x = 0; x < picture_.cols; ++x) picture_.col(x) *= 1 + (darkest - 1) * x / picture_.cols;
  return *this;
}

Bitmap Desk::photo(double noise) const {
  cv::Mat seen, grain(picture_.size(), CV_16SC3);
  cv::GaussianBlur(picture_, seen, {3, 3}, 0);
  cv::RNG random(17);
  random.fill(grain, cv::RNG::NORMAL, cv::Scalar::all(0), cv::Scalar::all(noise));
  cv::add(seen, grain, seen, cv::noArray(), CV_8UC3);
  cv::cvtColor(seen, seen, cv::COLOR_BGR2BGRA);
  return toBitmap(seen);
}

}  // namespace pravik::test
