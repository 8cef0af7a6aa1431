#pragma once

#include <vector>

#include "backends/opencv/finder/Edges.h"

namespace pravik {

/// The straight lines of an edge map that edges run along for a good way, the longest first.
std::vector<EdgeLine> findLines(const EdgeMap& edges);

}  // namespace pravik
