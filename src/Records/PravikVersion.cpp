#include "Records/PravikVersion.h"

namespace pravik {

const std::string& PravikVersion::string() {
  static const std::string text = std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
  return text;
}

const std::string& PravikVersion::fullDescription() {
  static const std::string text = string() + " (" + std::string(buildNumber) + ")";
  return text;
}

const std::string& pravikBinaryVersion() {
  static const std::string text =
      "Pravik_VERSION=" + PravikVersion::string() + " BUILD=" + std::string(PravikVersion::buildNumber);
  return text;
}

}  // namespace pravik
