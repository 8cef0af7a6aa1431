#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "Core/TextRecognizer.h"

namespace pravik::cli {

/// More than this in one object is refused.
inline constexpr std::size_t maximumInputBytes = std::size_t{64} << 20U;

/// The observations in a JSON text {"observations":[{"text":…,"confidence":…,"boundingBox":{"x":…,"y":…,"width":…,
/// "height":…}}]}, or what is wrong with it in words. Other keys are passed over. A box must lie within 0...1, give or
/// take a rounding error, and a confidence within 0...1.
tl::expected<Observations, std::string> parseObservations(std::string_view json);

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
