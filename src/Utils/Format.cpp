#include "Utils/Format.h"

#include <fmt/format.h>

namespace pravik::detail {

std::string formattedOf(std::string_view pattern, fmt::format_args arguments) {
  return fmt::vformat(pattern, arguments);
}

}  // namespace pravik::detail
