#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace pravik {

/// How many pixels the pictures have that a unit of the network abstraction layer of HEVC describes, which is a
/// sequence parameter set (ITU-T H.265, 7.3.2.2); nothing when it ends before it says so.
std::optional<std::int64_t> codedPixels(std::span<const std::uint8_t> sequenceParameterSet);

}  // namespace pravik
