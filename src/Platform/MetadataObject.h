#pragma once

#include <optional>
#include <string>

#include "Platform/MetadataObjectType.h"

namespace pravik {

/// Something that a live camera recognised by itself.
struct MetadataObject {
  MetadataObjectType type;
  /// What a machine-readable code says, as UTF-8; absent when it cannot be decoded, or when this is no code.
  std::optional<std::string> stringValue;
};

}  // namespace pravik
