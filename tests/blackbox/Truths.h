#pragma once

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace pravik::cli {

inline const std::filesystem::path samples = PRAVIK_SAMPLES_DIRECTORY;

/// What is on each picture of samples/: {"file":…,"kind":…,"level":…,"result":{…}}. The clips have a file of their own.
inline std::vector<nlohmann::json> truths(const char* name = "truth.jsonl") {
  std::vector<nlohmann::json> lines;
  std::ifstream file(samples / name);
  for (std::string line; std::getline(file, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

}  // namespace pravik::cli
