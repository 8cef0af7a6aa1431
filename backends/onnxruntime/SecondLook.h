#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "Platform/TextEngine.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/TextBox.h"

namespace pravik::ppocr {

/// Whether a text is mostly digits, and enough of them that one could be lost: a number, a date or a
/// period, with or without a short label.
bool deservesSecondLook(const std::string& text);

/// The numbers of the lines to be read again, in order.
std::vector<std::size_t> linesToReread(const std::vector<TextCandidate>& readings);

/// The reading that repeats most; of those that repeat equally often the one with the highest confidence. When none
/// repeats, each character that most readings of one length have in its place. The confidence is the mean over all
/// readings, one that disagrees, or the share of its characters that do, counting 0. There must be at least one.
TextCandidate agreedReading(const std::vector<TextCandidate>& readings);

/// Reads again what deserves it, and what was read with little confidence, from crops with other margins and at another
/// scale, and keeps in `readings` what repeats. `readings` are those of the boxes' plain crops. Of more lines than a
/// card can have only the first are read again, numbers before all others. A look that the limit cuts short does not
/// count.
void lookAgain(const LineReader& reader, const cv::Mat& picture, const std::vector<TextBox>& boxes,
               std::vector<TextCandidate>& readings, const WorkLimit& limit);

}  // namespace pravik::ppocr
