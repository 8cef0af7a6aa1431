#include "Desk.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "backends/opencv/Mat.h"

namespace pravik::test {
namespace {

constexpr double aspect = 85.60 / 53.98;
// Things are drawn flat at this many pixels a millimetre and then laid on the desk.
constexpr double scale = 12;

/// Lays a flat picture on the desk where the mask is white.
void lay(cv::Mat& desk, const cv::Mat& flat, const cv::Mat& mask, const CardCorners& corners) {
  const auto width = static_cast<float>(flat.cols), height = static_cast<float>(flat.rows);
  const std::array<cv::Point2f, 4> from = {{{0, 0}, {width, 0}, {width, height}, {0, height}}};
  const std::array<cv::Point2f, 4> to = {corners[0], corners[1], corners[2], corners[3]};
  const cv::Mat transform = cv::getPerspectiveTransform(from.data(), to.data());
  cv::Mat seen, share;
  cv::warpPerspective(flat, seen, transform, desk.size(), cv::INTER_AREA, cv::BORDER_REPLICATE);
  cv::warpPerspective(mask, share, transform, desk.size(), cv::INTER_AREA);
  cv::cvtColor(share, share, cv::COLOR_GRAY2BGR);
  cv::multiply(seen, share, seen, 1.0 / 255);
  cv::multiply(desk, ~share, desk, 1.0 / 255);
  desk += seen;
}

cv::Mat roundedMask(cv::Size size, int radius) {
  cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
  const cv::Point corner(radius, radius), opposite(size.width - 1 - radius, size.height - 1 - radius);
  cv::rectangle(mask, corner, opposite, 255, cv::FILLED);
  cv::rectangle(mask, corner, opposite, 255, 2 * radius);  // thick lines end round
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

  cv::Mat shade = cv::Mat::zeros(picture_.size(), CV_8UC3);
  lay(shade, cv::Mat(flat.size(), CV_8UC3, cv::Scalar::all(80)), mask, corners);
  const double reach = cv::norm(corners[1] - corners[0]) / 150;
  cv::GaussianBlur(shade, shade, {}, reach);
  const cv::Mat shift = (cv::Mat_<double>(2, 3) << 1, 0, reach, 0, 1, reach);
  cv::warpAffine(shade, shade, shift, shade.size());
  cv::subtract(picture_, shade * 0.5, picture_);
  lay(picture_, flat, mask, corners);
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
