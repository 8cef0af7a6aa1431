#pragma once

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "apps/pravik/CommandLine.h"
#include "apps/pravik/Installation.h"

namespace pravik::cli {

inline const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

inline std::vector<nlohmann::json> jsonLines(std::istream& text) {
  std::vector<nlohmann::json> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

/// What is on each picture of samples/: {"file":…,"kind":…,"level":…,"result":{…}}. The clips have a file of their own.
inline std::vector<nlohmann::json> truths(const char* name = "truth.jsonl") {
  std::ifstream file(samples / name);
  return jsonLines(file);
}

/// What a run of the tool ended with and wrote.
struct ToolRun {
  int status = 0;
  std::string out, err;

  /// The answers of a run with --format jsonl.
  std::vector<nlohmann::json> answers() const {
    std::istringstream all(out);
    return jsonLines(all);
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
