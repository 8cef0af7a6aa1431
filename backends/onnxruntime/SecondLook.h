#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// Whether a text is mostly digits, and enough of them that one could be lost: an identity number, a card number, a
/// date or a period, with or without a short label.
bool deservesSecondLook(const std::string& text);

/// The reading that repeats most; of those that repeat equally often the one with the highest confidence. Its
/// confidence is the mean over all readings, a reading that disagrees counting 0. There must be at least one.
TextCandidate agreedReading(const std::vector<TextCandidate>& readings);

/// Reads again what deserves it, and what was read with little confidence, from crops with other margins and at another
/// scale, and keeps in `readings` what repeats. `readings` are those of the boxes' plain crops.
void lookAgain(const LineReader& reader, const cv::Mat& picture, const std::vector<TextBox>& boxes,
               std::vector<TextCandidate>& readings);

}  // namespace pravik::ppocr
