#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace pravik {

/// The day of the calendar that is written as "2026-01-31"; nothing for any other text.
std::optional<std::chrono::year_month_day> dayNamed(std::string_view text);

}  // namespace pravik
