#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Platform/Platform.h"
#include "apps/pravik/Settings.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// A command that measures one picture without reading it.
struct MeasurementCommand {
  std::string_view kind;
  std::string_view description;
  Json (*measure)(const Bitmap& picture, const Platform& platform);
};

/// stats: the picture's statistics and which enhancement they ask for. quality: what the scanner would make of it as a
/// live frame.
std::span<const MeasurementCommand> measurementCommands();

/// Measures the picture in the file, or in the standard input when it is "-".
ExitStatus answerMeasurement(const MeasurementCommand& command, const std::string& file, const Settings& settings,
                             const Host& host);

}  // namespace pravik::cli
