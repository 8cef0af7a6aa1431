#include "PravikVersion.h"

#include <fmt/format.h>

namespace pravik {

const std::string& PravikVersion::string() {
  static const std::string text = fmt::format("{}.{}.{}", major, minor, patch);
  return text;
}

const std::string& PravikVersion::fullDescription() {
  static const std::string text = fmt::format("{} ({})", string(), buildNumber);
  return text;
}

const std::string& pravikBinaryVersion() {
  static const std::string text =
      fmt::format("Pravik_VERSION={} BUILD={}", PravikVersion::string(), PravikVersion::buildNumber);
  return text;
}

}  // namespace pravik
