#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace pravik {

/// A cut of a picture for a code reader, and where its pixels came from.
struct PictureView {
  cv::Mat grey;
  /// Maps pixels of the cut to pixels of the picture, both from the top left (homogeneous coordinates).
  cv::Matx33d toPicture = cv::Matx33d::eye();
};

/// Above this coherence the edges of a region are taken for bars.
inline constexpr double barCoherence = 0.5;

/// A place full of edges of one direction and its right angle, as bars, modules and print are.
struct CodeRegion {
  /// Centre and extent in pixels of the picture; `angle` (degrees, clockwise as the picture is seen) turns the first
  /// axis across the bars, or onto the nearer of the two directions of modules.
  cv::RotatedRect area;
  /// How much of the edges run in one direction: 1 for bars, near 0 for a matrix of modules.
  double coherence = 0;
};

/// The places that most look like codes, the strongest first. The structure tensor of the picture (Bigun and
/// Granlund, 1987) is summed over small cells; neighbouring cells with strong edges make a region.
std::vector<CodeRegion> findCodeRegions(const cv::Mat& grey, std::size_t maximum);

/// Cuts out a region with a margin, turned upright and scaled.
PictureView cutRegion(const cv::Mat& grey, const CodeRegion& region, double scale);

}  // namespace pravik
