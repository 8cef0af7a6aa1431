#include "apps/scanner/ScannerSettings.h"

#include <CLI/CLI.hpp>
#include <map>
#include <ostream>

#include "Records/DocumentKind.h"
#include "Records/PravikVersion.h"
#include "apps/pravik/Settings.h"

namespace pravik::scanner {
namespace {

std::map<std::string, OCRScanMode> modeNames() {
  std::map<std::string, OCRScanMode> names;
  for (const DocumentKind& kind : documentKinds()) names.emplace(kind.modeName, kind.mode);
  return names;
}

/// An option that takes one of the names of a table, and nothing that stands for it.
template <class Value>
void addChoice(CLI::App& app, const std::string& option, const std::map<std::string, Value>& names, std::string& chosen,
               const std::string& help) {
  std::string list;
  for (const auto& [name, value] : names) list += (list.empty() ? "" : ", ") + name;
  app.add_option(option, chosen, help + ": " + list)->type_name("NAME")->check(CLI::IsMember(names).description(""));
}

}  // namespace

std::variant<ScannerSettings, int> readSettings(const std::vector<std::string>& arguments, std::ostream& out,
                                                std::ostream& err) {
  ScannerSettings settings;
  CLI::App app{"Scans bank cards, identity cards and codes with a camera.", "pravik-scanner"};
  app.set_version_flag("--version", PravikVersion::fullDescription());
  std::string mode;
  std::string level = "none";
  const std::map<std::string, OCRScanMode> modes = modeNames();
  const std::map<std::string, OCRLogger::Level> levels = OCRLogger::levelsByName();
  addChoice(app, "--mode", modes, mode, "Scan this at once");
  app.add_option("--camera", settings.camera, "The number of a camera (0 is the first) or a video file")
      ->type_name("INDEX|FILE");
  app.add_flag("--loop", settings.loops, "Begin a video file anew when it has ended");
  app.add_flag("--mode-switch", settings.showsModeSwitch, "Let the user switch between the cards while scanning");
  app.add_flag("--json", settings.writesJson, "Write the first record to standard output and end");
  app.add_option("--models", settings.models, "The folder of the text models")->type_name("DIR");
  addChoice(app, "--log-level", levels, level, "Log on standard error");
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? 0 : static_cast<int>(cli::usageError);
  }
  if (!mode.empty()) settings.mode = modes.at(mode);
  settings.logLevel = levels.at(level);
  return settings;
}

}  // namespace pravik::scanner
