#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>

namespace pravik::cli {

/// More than this in one object is refused.
inline constexpr std::size_t maximumInputBytes = std::size_t{64} << 20U;

/// A piece of input that may have been too long to keep.
struct InputText {
  std::string text;
  bool tooLong = false;
};

/// The next line without its end, or nothing at the end of the input. A line of more than maximumInputBytes is read
/// over without being kept.
std::optional<InputText> nextLine(std::istream& in);
/// Everything up to the end of the input.
InputText wholeText(std::istream& in);

}  // namespace pravik::cli
