#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Records/DocumentKind.h"
#include "apps/pravik/Settings.h"

namespace pravik::cli {

/// What is asked of a scan.
struct ScanOptions {
  /// A video file, or a camera by its number or device file.
  std::string source;
  /// What to look for.
  const DocumentKind* kind = nullptr;
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

/// `pravik scan`: runs the scanner's screen on a video without a window and writes what happens on it.
///
/// On a file's own time, recognition takes none: the same file then gives the same events at the same times on every
/// machine, and what a recognition takes on one of them is for its benchmarks to say.
ExitStatus scan(const ScanOptions& options, const Settings& settings, const Host& host);

}  // namespace pravik::cli
