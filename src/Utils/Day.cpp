#include "Utils/Day.h"

#include <algorithm>

#include "Utils/Text.h"

namespace pravik {

std::optional<std::chrono::year_month_day> dayNamed(std::string_view text) {
  constexpr std::string_view form = "dddd-dd-dd";
  const auto fits = [](char wanted, char c) { return wanted == 'd' ? isAsciiDigit(c) : c == wanted; };
  if (!std::ranges::equal(form, text, fits)) return std::nullopt;
  const auto number = [&](std::size_t start, std::size_t length) {
    unsigned value = 0;
    for (const char digit : text.substr(start, length)) value = 10 * value + static_cast<unsigned>(digit - '0');
    return value;
  };
  const std::chrono::year_month_day day{std::chrono::year(static_cast<int>(number(0, 4))),
                                        std::chrono::month(number(5, 2)), std::chrono::day(number(8, 2))};
  return day.ok() ? std::optional(day) : std::nullopt;
}

}  // namespace pravik
