#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "Platform/RectangleDetector.h"
#include "backends/opencv/finder/Edges.h"
#include "backends/opencv/finder/Outline.h"

namespace pravik {

/// The quadrilaterals of lines that fit a request, the best first, at most `most`.
std::vector<Outline> findOutlines(const std::vector<EdgeLine>& lines, cv::Size picture, const RectangleRequest& request,
                                  std::size_t most);

}  // namespace pravik
