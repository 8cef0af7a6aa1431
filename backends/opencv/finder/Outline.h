#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "Platform/RectangleDetector.h"
#include "backends/opencv/finder/Edges.h"

namespace pravik {

/// A quadrilateral that may be the outline of a card, and what speaks for it. Pixels from the top left.
struct Outline {
  /// In order around the quadrilateral: from the top-left corner to the right.
  std::array<cv::Point2d, 4> corners;
  /// Share of the sides that an edge runs along in the reduced picture: the mean and the worst side.
  double support = 0;
  double leastSupport = 0;
  /// How much of the sides has the brighter side consistently inside (1) or outside (-1).
  double polarity = 0;
  /// Share of the lines just beyond the corners that an edge runs along: a card ends at its corners.
  double overrun = 0;
  /// Length over width of the flat rectangle of which this is the picture, at least 1.
  double aspect = 1;
  /// Cosine of the angle between the sides of that flat figure: 0 for a rectangle.
  double skew = 0;
  /// The same where the full picture has an edge exactly on the line.
  double sharpSupport = 0;
  double leastSharpSupport = 0;
  /// How well the corners are rounded as those of a card: 1 when the tips look like the desk and the arcs like the
  /// card.
  double roundness = 0;
};

/// Sets aspect and skew from the corners.
void setShape(Outline& outline, cv::Size picture);

/// How far the flat figure is from a card of the common size (ISO/IEC 7810 ID-1, 85.60 mm by 53.98 mm): the absolute
/// logarithm of the ratio of the aspects.
double cardShapeError(const Outline& outline);

/// How sure one can be that a refined outline is that of a card, 0 to 1.
double confidence(const Outline& outline);

/// Share of the smaller of two outlines that both cover, 0 to 1.
double overlap(const Outline& a, const Outline& b);

/// The quadrilaterals of lines that fit a request, the best first, at most `most`.
std::vector<Outline> findOutlines(const std::vector<EdgeLine>& lines, cv::Size picture, const RectangleRequest& request,
                                  std::size_t most);

/// Moves outlines that were found in a reduced picture to the edges of the full one.
class OutlineRefiner {
 public:
  /// `picture` is CV_8UC4 or CV_8UC1; `reduced` is the size of the reduced picture.
  OutlineRefiner(const cv::Mat& picture, cv::Size reduced)
      : picture_(picture),
        scale_(static_cast<double>(picture.cols) / reduced.width, static_cast<double>(picture.rows) / reduced.height) {}

  /// The outline in pixels of the full picture, its sides fitted to the edges there and the evidence that only the
  /// full picture gives filled in.
  Outline refine(const Outline& reduced) const;

 private:
  struct Side;
  using Color = cv::Vec3f;

  Color colorAt(cv::Point2d point) const;
  Side fitSide(cv::Point2d from, cv::Point2d to) const;
  double roundness(const Outline& outline) const;

  cv::Mat picture_;
  /// Pixels of the picture for one of the reduced picture.
  cv::Point2d scale_;
};

}  // namespace pravik
