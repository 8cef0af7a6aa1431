#include "Records/OCRScanMode.h"

#include <string>

#include "Records/CodeType.h"
#include "Records/DocumentKind.h"

namespace pravik {
namespace {

template <class Identifier>
std::vector<Identifier> identifiers(OCRScanMode mode, std::string_view CodeType::* identifier) {
  if (documentKind(mode).isCard()) return {};
  std::vector<Identifier> result;
  result.reserve(codeTypes.size());
  for (const CodeType& type : codeTypes) result.push_back({std::string(type.*identifier)});
  return result;
}

}  // namespace

std::string_view description(OCRScanMode mode) {
  return documentKind(mode).displayName;
}

std::vector<BarcodeSymbology> visionSymbologies(OCRScanMode mode) {
  return identifiers<BarcodeSymbology>(mode, &CodeType::symbology);
}

std::vector<MetadataObjectType> metadataObjectTypes(OCRScanMode mode) {
  return identifiers<MetadataObjectType>(mode, &CodeType::metadataObjectType);
}

}  // namespace pravik
