#pragma once

#include <array>
#include <string_view>

namespace pravik {

/// One type of code: how it is shown, and what still pictures and a live camera call it.
struct CodeType {
  std::string_view displayName;
  std::string_view symbology;
  std::string_view metadataObjectType;
};

/// The supported types, in the order in which they are asked for and compared.
inline constexpr std::array<CodeType, 11> codeTypes{{
    {"QR Code", "VNBarcodeSymbologyQR", "AVMetadataObjectTypeQRCode"},
    {"Aztec", "VNBarcodeSymbologyAztec", "AVMetadataObjectTypeAztecCode"},
    {"DataMatrix", "VNBarcodeSymbologyDataMatrix", "AVMetadataObjectTypeDataMatrixCode"},
    {"EAN-13", "VNBarcodeSymbologyEAN13", "AVMetadataObjectTypeEAN13Code"},
    {"EAN-8", "VNBarcodeSymbologyEAN8", "AVMetadataObjectTypeEAN8Code"},
    {"UPC-E", "VNBarcodeSymbologyUPCE", "AVMetadataObjectTypeUPCECode"},
    {"Code 128", "VNBarcodeSymbologyCode128", "AVMetadataObjectTypeCode128Code"},
    {"Code 39", "VNBarcodeSymbologyCode39", "AVMetadataObjectTypeCode39Code"},
    {"Code 93", "VNBarcodeSymbologyCode93", "AVMetadataObjectTypeCode93Code"},
    {"ITF-14", "VNBarcodeSymbologyITF14", "AVMetadataObjectTypeITF14Code"},
    {"PDF417", "VNBarcodeSymbologyPDF417", "AVMetadataObjectTypePDF417Code"},
}};

}  // namespace pravik
