#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "backends/opencv/finder/Edges.h"

namespace pravik {

/// A line that many edges may lie on, known only roughly. Pixels from the top left.
struct LineGuess {
  /// The point of the line that is nearest to the middle of the map.
  cv::Point2d point;
  /// Of length 1.
  cv::Point2d direction;
  int votes = 0;
};

/// How far the direction of a guess may be off, in radians, and its distance in pixels.
inline constexpr double guessedDirectionStep = 2 * CV_PI / EdgeMap::turn;
inline constexpr int guessedDistanceStep = 2;

/// The lines that most edges vote for, some of every orientation. Every edge votes only for lines that run along it
/// (O'Gorman and Clowes, 1976), by its strength.
std::vector<LineGuess> guessLines(const EdgeMap& edges);

/// The straight lines of an edge map that edges run along for a good way, the longest first.
std::vector<EdgeLine> findLines(const EdgeMap& edges);

}  // namespace pravik
