#pragma once

#include <string>
#include <string_view>

namespace pravik {

/// The library's version.
struct PravikVersion {
  static constexpr int major = 1;
  static constexpr int minor = 1;
  static constexpr int patch = 1;
  /// Names the build; "dev" for one made from a checkout.
  static constexpr std::string_view buildNumber = "dev";

  /// "1.1.1"
  static const std::string& string();
  /// "1.1.1 (dev)"
  static const std::string& fullDescription();
};

/// A line that tells the version of a linked library: "Pravik_VERSION=1.1.1 BUILD=dev".
const std::string& pravikBinaryVersion();

}  // namespace pravik
