#pragma once

#include <functional>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"

namespace pravik::ppocr {

/// Whether a text is mostly digits, and enough of them that one could be lost: an identity number, a card number, a
/// date or a period, with or without a short label.
bool deservesSecondLook(const std::string& text);

/// The reading that repeats most; of those that repeat equally often the one with the highest confidence. There must
/// be at least one.
TextCandidate agreedReading(const std::vector<TextCandidate>& readings);

}  // namespace pravik::ppocr
