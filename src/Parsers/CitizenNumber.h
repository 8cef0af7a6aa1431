#pragma once

#include <string_view>

namespace pravik {

/// A citizen number of 18 characters (GB 11643): six digits of the place, the birth date from 1900 to 2099, three
/// digits of the sequence and the check character, which is not tested. Not anchored.
inline constexpr std::string_view citizenNumberPattern =
    R"([1-9]\d{5}(?:19|20)\d{2}(?:0[1-9]|1[0-2])(?:0[1-9]|[12]\d|3[01])\d{3}[\dX])";

}  // namespace pravik
