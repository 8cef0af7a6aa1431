#pragma once

#include <span>
#include <string>

#include "backends/onnxruntime/CtcDecoder.h"
#include "backends/onnxruntime/KeyList.h"

namespace pravik::ppocr {

/// The text of decoded characters as UTF-8, with the model's interchangeable spellings made one: this is the only
/// place where the engine changes what the model read.
std::string readingText(std::span<const CtcCharacter> characters, const KeyList& keys);

}  // namespace pravik::ppocr
