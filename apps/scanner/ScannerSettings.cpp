#include "apps/scanner/ScannerSettings.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "Records/DocumentKind.h"
#include "Records/PravikVersion.h"
#include "apps/pravik/Choice.h"
#include "apps/pravik/Settings.h"

namespace pravik::scanner {
namespace {

cli::Choices<OCRScanMode> modes() {
  cli::Choices<OCRScanMode> choices;
  for (const DocumentKind& kind : documentKinds()) choices.emplace_back(kind.commandName, kind.mode);
  return choices;
}

cli::Choices<OCRLogger::Level> levels() {
  const auto named = OCRLogger::levelsByName();
  return {named.begin(), named.end()};
}

}  // namespace

std::variant<ScannerSettings, int> readSettings(const std::vector<std::string>& arguments, std::ostream& out,
                                                std::ostream& err) {
  ScannerSettings settings;
  CLI::App app{"Scans bank cards, identity cards and codes with a camera.", "pravik-scanner"};
  app.set_version_flag("--version", PravikVersion::fullDescription());
  cli::addChoice(app, "--mode", settings.mode, modes(), "Scan this at once");
  app.add_option("--camera", settings.camera, "The number of a camera (0 is the first) or a video file")
      ->type_name("INDEX|FILE");
  app.add_flag("--loop", settings.loops, "Begin a video file anew when it has ended");
  app.add_flag("--mode-switch", settings.showsModeSwitch, "Let the user switch between the cards while scanning");
  app.add_flag("--json", settings.writesJson, "Write the first record to standard output and end");
  cli::addChoice(app, "--lang", settings.language, languagesByName(),
                 "Language of the window (that of the environment)");
  app.add_option("--models", settings.models, "The folder of the text models")->type_name("DIR");
  cli::addChoice(app, "--log-level", settings.logLevel, levels(), "Log on standard error");
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? 0 : static_cast<int>(cli::usageError);
  }
  return settings;
}

}  // namespace pravik::scanner
