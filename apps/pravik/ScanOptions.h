#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "OCRScanMode.h"

namespace pravik::cli {

/// Something that a scan can look for.
struct NamedMode {
  std::string_view name;
  OCRScanMode mode;
  /// The kind that its answers carry, as those of pictures do.
  std::string_view kind;
};

/// What is asked of a scan.
struct ScanOptions {
  /// A video file, or a camera by its number or device file.
  std::string source;
  NamedMode mode{};
  /// Follows the clock. A video file otherwise plays as fast as it can on its own time; a camera always follows the
  /// clock.
  bool isRealTime = false;
  /// Plays a file again and again.
  bool loops = false;
  /// Cuts photos to the cut-out on the screen, which only a person who sees the screen can aim at.
  bool cutsToCutout = false;
  /// Whether the button for manual capture is tapped when it is offered and the card is in view.
  bool tapsManualCapture = true;
  /// When to give up; absent for never.
  std::optional<std::chrono::milliseconds> timeout;
};

}  // namespace pravik::cli
