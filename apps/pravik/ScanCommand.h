#pragma once

#include <span>

#include "apps/pravik/ScanOptions.h"
#include "apps/pravik/Settings.h"

namespace pravik::cli {

std::span<const NamedMode> namedModes();

/// `pravik scan`: runs the scanner's screen on a video without a window and writes what happens on it.
///
/// On a file's own time, recognition takes none: the same file then gives the same events at the same times on every
/// machine, and what a recognition takes on one of them is for its benchmarks to say.
ExitStatus scan(const ScanOptions& options, const Settings& settings, const Host& host);

}  // namespace pravik::cli
