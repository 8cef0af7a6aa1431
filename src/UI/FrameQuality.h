#pragma once

#include <optional>
#include <string_view>

#include "Platform/VideoFrame.h"

namespace pravik {

/// How much glare and darkness a live frame shows. The default is the neutral record of a frame that was not or
/// cannot be measured: it blocks nothing.
struct FrameQuality {
  /// Share of the samples that are glare, 0...1.
  float specularRatio = 0;
  /// Share of the samples that are dark, 0...1.
  float darkRatio = 0;
  /// Share of glare in the sampled row that has the most of it, 0...1: shows a narrow band of glare.
  float peakRowRatio = 0;
  /// Whether the frame may be taken as a photo without being asked for.
  bool isGoodForCapture = true;

  /// Measures every 4th pixel of every 4th row in the central 60 % of a frame (luma by ITU-R BT.601). A frame without
  /// pixels, or too small to have such samples, gives the neutral record. Allocates nothing.
  static FrameQuality analyze(const VideoFrame& frame);

  /// What the user should do about it; absent when nothing.
  std::optional<std::string_view> qualityHint() const;

  bool operator==(const FrameQuality&) const = default;
};

}  // namespace pravik
