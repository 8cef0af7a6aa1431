#include "Records/CodeScanResult.h"

#include <algorithm>
#include <string_view>

#include "Records/CodeType.h"

namespace pravik {

namespace {

std::string displayName(std::string_view CodeType::* identifier, const std::string& rawValue) {
  const auto* found = std::ranges::find(codeTypes, rawValue, identifier);
  return found == codeTypes.end() ? rawValue : std::string(found->displayName);
}

}  // namespace

std::string pravikDisplayName(const BarcodeSymbology& symbology) {
  return displayName(&CodeType::symbology, symbology.rawValue);
}

std::string pravikDisplayName(const MetadataObjectType& type) {
  return displayName(&CodeType::metadataObjectType, type.rawValue);
}

}  // namespace pravik
