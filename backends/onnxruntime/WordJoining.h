#pragma once

#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// A block of text where it stands.
struct ReadLine {
  TextBox box;
  TextCandidate reading;
};

/// The blocks with words that were found apart put together, with a space between: those without Chinese characters
/// that are as high, stand beside each other and no further apart than words do. Embossed letters stand so wide that
/// the detector takes every word for a line of its own.
std::vector<ReadLine> withWordsJoined(std::vector<ReadLine> lines);

}  // namespace pravik::ppocr
