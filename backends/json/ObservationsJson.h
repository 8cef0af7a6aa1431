#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "Records/Observation.h"

namespace pravik {

/// A longer text is refused.
inline constexpr std::size_t maximumObservationsBytes = std::size_t{64} << 20U;

/// The observations in a JSON text {"observations":[{"text":…,"confidence":…,"boundingBox":{"x":…,"y":…,"width":…,
/// "height":…}}]}, or what is wrong with it in words. Other keys are passed over. A box must lie within 0...1, give or
/// take a rounding error, and a confidence within 0...1.
tl::expected<Observations, std::string> parseObservations(std::string_view text);

}  // namespace pravik
