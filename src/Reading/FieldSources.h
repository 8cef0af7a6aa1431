#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Records/Observation.h"

namespace pravik {

/// Whether a block of text holds a value, but for labels, spaces and the separators of dates, or a piece of it.
bool feeds(std::string_view block, std::string_view value);

/// The blocks that a value was read from: the one that holds least beside it, else all that hold a piece of it. None
/// for what stands in no block, such as a date that was taken from another field.
Observations sourcesOf(std::string_view value, const Observations& blocks);

}  // namespace pravik
