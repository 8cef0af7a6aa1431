#pragma once

#include <fmt/core.h>

#include <string>
#include <string_view>

namespace pravik {

namespace detail {

std::string formattedOf(std::string_view pattern, fmt::format_args arguments);

}  // namespace detail

/// fmt::format(), whose machinery takes the compiler seconds in every source that calls it, compiled once. For sources
/// only: who links Pravik need not have fmt.
template <class... Arguments>
std::string formatted(fmt::format_string<Arguments...> pattern, const Arguments&... arguments) {
  const fmt::string_view text = pattern;
  return detail::formattedOf({text.data(), text.size()}, fmt::make_format_args(arguments...));
}

}  // namespace pravik
