#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"

namespace pravik::cli {

/// What a run of the tool ended with and wrote.
struct ToolRun {
  int status = 0;
  std::string out, err;

  /// The answers of a run with --format jsonl.
  std::vector<nlohmann::json> answers() const {
    std::vector<nlohmann::json> lines;
    std::istringstream all(out);
    for (std::string line; std::getline(all, line);) lines.push_back(nlohmann::json::parse(line));
    return lines;
  }
};

/// The parts of the default platform, made once: the models are loaded by the first test that reads text.
inline const Platform& realPlatform() {
  static const Platform platform = makeDefaultPlatform();
  return platform;
}

/// Runs the tool in this process on the real parts.
inline ToolRun runTool(const std::vector<std::string>& words) {
  std::istringstream in;
  std::ostringstream out, err;
  const int status =
      run(words, {.in = in,
                  .out = out,
                  .err = err,
                  .makePlatform =
                      [](const DefaultPlatformOptions& options) {
                        return options.modelDirectory.empty() ? realPlatform() : makeDefaultPlatform(options);
                      },
                  .missingModels = missingModels,
                  .brokenModels = brokenModels});
  return {status, out.str(), err.str()};
}

}  // namespace pravik::cli
