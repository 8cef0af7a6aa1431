#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "apps/pravik/Settings.h"

namespace pravik::cli {

/// One part that the tool works with.
struct Part {
  std::string name;
  /// Empty when the part is not there.
  std::string version;
  /// What is wrong with it, in words; empty when it can be used.
  std::string problem;
};

/// The libraries and the text models in the folder, which is the usual one when it is empty. Each model is opened as
/// the engine would, and compared with the SHA-256 that tools/setup pins.
std::vector<Part> installedParts(const std::filesystem::path& models);

/// The model files that are not there, as text for a person; costs next to nothing.
std::vector<std::string> missingModels(const std::filesystem::path& models);
/// The same for models that are there but cannot be used.
std::vector<std::string> brokenModels(const std::filesystem::path& models);

/// Says what is missing and how to mend it. Returns incompleteInstallation.
ExitStatus reportIncomplete(const std::vector<std::string>& problems, std::ostream& err);

/// `pravik doctor`: every part with its version and what is missing.
ExitStatus doctor(const Settings& settings, const Host& host);

}  // namespace pravik::cli
