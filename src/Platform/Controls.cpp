#include "Platform/Controls.h"

#include <algorithm>

namespace pravik {

void SegmentedControl::touched(Point point) {
  if (segments.empty()) return;
  const double share = point.x / frame.width * static_cast<double>(segments.size());
  const std::size_t segment = std::min(static_cast<std::size_t>(std::max(0.0, share)), segments.size() - 1);
  if (!segments[segment].isEnabled || segment == selectedSegment) return;
  selectedSegment = segment;
  if (onChange) onChange(segment);
}

}  // namespace pravik
