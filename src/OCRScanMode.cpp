#include "OCRScanMode.h"

#include <string>

#include "CodeType.h"

namespace pravik {

namespace {

template <class Identifier>
std::vector<Identifier> identifiers(OCRScanMode mode, std::string_view CodeType::* identifier) {
  if (mode != OCRScanMode::qrCode) return {};
  std::vector<Identifier> result;
  result.reserve(codeTypes.size());
  for (const CodeType& type : codeTypes) result.push_back({std::string(type.*identifier)});
  return result;
}

}  // namespace

std::string_view description(OCRScanMode mode) {
  switch (mode) {
    case OCRScanMode::bankCard:
      return "银行卡";
    case OCRScanMode::idCardFront:
      return "身份证正面";
    case OCRScanMode::idCardBack:
      return "身份证背面";
    case OCRScanMode::qrCode:
      return "二维码/条形码";
  }
  return {};
}

std::vector<BarcodeSymbology> visionSymbologies(OCRScanMode mode) {
  return identifiers<BarcodeSymbology>(mode, &CodeType::symbology);
}

std::vector<MetadataObjectType> metadataObjectTypes(OCRScanMode mode) {
  return identifiers<MetadataObjectType>(mode, &CodeType::metadataObjectType);
}

}  // namespace pravik
