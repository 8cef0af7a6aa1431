#include "backends/opencv/FrameCodes.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include "CodeType.h"
#include "Utils/OCRLogger.h"

namespace pravik {
namespace {

/// Codes are looked for on every so-manieth frame, which at 30 frames a second nobody notices.
constexpr std::int64_t frameInterval = 3;

}  // namespace

FrameCodes::FrameCodes(std::shared_ptr<const BarcodeDetector> detector, std::shared_ptr<SerialQueue> queue,
                       CaptureSession::MetadataHandler handler)
    : detector_(std::move(detector)), queue_(std::move(queue)), handler_(std::move(handler)) {}

void FrameCodes::setTypes(const std::vector<MetadataObjectType>& types) {
  symbologies_.clear();
  for (const MetadataObjectType& type : types) {
    const auto* known = std::ranges::find(codeTypes, type.rawValue, &CodeType::metadataObjectType);
    if (known != codeTypes.end()) symbologies_.push_back({std::string(known->symbology)});
  }
}

void FrameCodes::process(const Bitmap& frame) {
  if (symbologies_.empty() || ++frameCount_ % frameInterval != 0) return;
  std::vector<MetadataObject> objects;
  try {
    for (const BarcodeObservation& code : detector_->detect(frame, symbologies_)) {
      const auto* known = std::ranges::find(codeTypes, code.symbology.rawValue, &CodeType::symbology);
      if (known != codeTypes.end()) objects.push_back({{std::string(known->metadataObjectType)}, code.payload});
    }
  } catch (const std::exception& error) {
    OCRLogger::debug([&] { return std::string("code detection failed: ") + error.what(); });
    return;
  }
  if (!objects.empty()) queue_->async([handler = handler_, objects = std::move(objects)] { handler(objects); });
}

}  // namespace pravik
