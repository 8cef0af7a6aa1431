#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Platform/BarcodeDetector.h"

namespace pravik {

/// Corners of a code in the order of ZXing: around it, the first two along one row of the bars.
using CodeOutline = std::array<cv::Point2d, 4>;

/// A code format as ZXing reads it; defined beside the table of all eleven.
struct CodeFormat;

/// The formats of the table that are asked for, the most trustworthy first; identifiers that it lacks are passed over.
std::vector<const CodeFormat*> codeFormats(std::span<const BarcodeSymbology> symbologies);

/// Whether the format is one row of bars.
bool isLinear(const CodeFormat& format);

/// One code read on a grey picture.
struct CodeReading {
  BarcodeSymbology symbology;
  /// UTF-8.
  std::string payload;
  /// Around the code; pixels from the top left.
  CodeOutline outline;
};

/// Looks for one code of one format on a grey picture, at any of four orientations. A reading whose text does not fit
/// the format's rules is refused. A picture crowded with QR codes, or with what looks like their corners, is searched
/// in parts, until the limit is spent.
std::optional<CodeReading> readCode(const cv::Mat& grey, const CodeFormat& format, const WorkLimit& limit);

}  // namespace pravik
