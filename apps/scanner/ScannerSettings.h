#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Records/OCRScanMode.h"
#include "Utils/OCRLogger.h"
#include "backends/json/Wording.h"

namespace pravik::scanner {

/// What the user asked for on the command line.
struct ScannerSettings {
  /// Begins with a scan of this when it is there, else with the start page.
  std::optional<OCRScanMode> mode = {};
  /// The number of a camera, its device file, or the path of a video file; empty for the first camera found.
  std::string camera = {};
  bool loops = false;
  bool showsModeSwitch = false;
  /// Writes the first record to standard output and ends.
  bool writesJson = false;
  Language language = environmentLanguage();
  std::filesystem::path models = {};
  OCRLogger::Level logLevel = OCRLogger::Level::none;
};

/// The settings, or the status to end with when the arguments were wrong or only asked for help, which has been
/// written to `out` or `err`.
std::variant<ScannerSettings, int> readSettings(const std::vector<std::string>& arguments, std::ostream& out,
                                                std::ostream& err);

}  // namespace pravik::scanner
