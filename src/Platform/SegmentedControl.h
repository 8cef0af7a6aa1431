#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Platform/Font.h"
#include "Platform/View.h"

namespace pravik {

/// A row of segments of equal width, one of which is selected. The background is that of the view.
class SegmentedControl : public View {
 public:
  struct Segment {
    std::string title;
    /// A segment that is not enabled is drawn faint and takes no touches.
    bool isEnabled = true;
  };

  std::vector<Segment> segments;
  std::size_t selectedSegment = 0;
  Color titleColor = colors::white;
  Color selectedTitleColor = colors::black;
  /// Fills the selected segment.
  Color selectedTintColor = colors::white;
  Font font;
  /// Told after a touch has selected another segment.
  std::function<void(std::size_t segment)> onChange;

 protected:
  bool takesTouches() const override { return true; }
  void touched(Point point) override;
};

}  // namespace pravik
