#include "backends/opencv/EdgeAlignment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace pravik {
namespace {

// How far the gradient of an edge may be from the normal of its line, in steps: 20 degrees.
constexpr int tolerance = 14;

using Signs = std::array<std::int8_t, EdgeMap::turn + 1>;

/// For lines of every normal, by steps, the signs of every value of an edge map.
const std::array<Signs, EdgeMap::turn>& allSigns() {
  static const auto table = [] {
    std::array<Signs, EdgeMap::turn> signs{};
    for (int normal = 0; normal < EdgeMap::turn; ++normal) {
      for (int direction = 0; direction < EdgeMap::turn; ++direction) {
        int difference = std::abs(direction - normal);
        difference = std::min(difference, EdgeMap::turn - difference);
        const int sign = difference <= tolerance ? 1 : difference >= EdgeMap::turn / 2 - tolerance ? -1 : 0;
        signs[static_cast<std::size_t>(normal)][static_cast<std::size_t>(direction + 1)] =
            static_cast<std::int8_t>(sign);
      }
    }
    return signs;
  }();
  return table;
}

}  // namespace

EdgeAlignment::EdgeAlignment(const EdgeMap& edges, cv::Point2d direction) : edges_(&edges) {
  const double steps = std::atan2(direction.x, -direction.y) / (2 * CV_PI) * EdgeMap::turn;
  const int normal = static_cast<int>(std::floor(steps < 0 ? steps + EdgeMap::turn : steps)) % EdgeMap::turn;
  signs_ = allSigns()[static_cast<std::size_t>(normal)].data();
}

}  // namespace pravik
