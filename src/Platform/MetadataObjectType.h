#pragma once

#include <string>

namespace pravik {

/// The identifier of a code type in a live camera's metadata, such as "AVMetadataObjectTypeQRCode".
struct MetadataObjectType {
  std::string rawValue;
  bool operator==(const MetadataObjectType&) const = default;
};

}  // namespace pravik
