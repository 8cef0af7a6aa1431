#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Platform/BarcodeDetector.h"
#include "Platform/MetadataObjectType.h"

namespace pravik {

/// What a scan looks for.
enum class OCRScanMode : std::uint8_t { bankCard, idCardFront, idCardBack, qrCode };

/// The mode's name for people: "银行卡", "身份证正面", "身份证背面" or "二维码/条形码".
std::string_view description(OCRScanMode mode);
/// The code types that the mode reads from a still picture; none for a card.
std::vector<BarcodeSymbology> visionSymbologies(OCRScanMode mode);
/// The code types that the mode reads from a live camera; none for a card.
std::vector<MetadataObjectType> metadataObjectTypes(OCRScanMode mode);

}  // namespace pravik
