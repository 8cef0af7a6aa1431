#pragma once

#include <cstddef>
#include <opencv2/core.hpp>

namespace pravik {

/// Whether a grey picture shows more than so many finder patterns of QR codes: squares through whose middle dark and
/// light run 1:1:3:1:1 (ISO/IEC 18004, 6.3.3). Takes about as long as looking for one kind of bars.
bool hasMoreFinderPatterns(const cv::Mat& grey, std::size_t maximum);

}  // namespace pravik
