#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pravik {

// Repairs of a card number that fails the Luhn check. A repair is made only when it is the only one that gives a
// valid number; as soon as two are possible, even two that give the same number, it is refused and the log says so:
// with a single check digit almost every misread digit has several repairs, and a wrong number is worse than none.
//
// Numbers are plain digits. When the number begins with `binPrefix`, the digits printed once more elsewhere on the
// card, those digits are left alone; an empty prefix protects nothing.

/// The number with one digit changed.
std::optional<std::string> luhnSingleDigitFix(std::string_view number, std::string_view binPrefix = {});

/// A number of 17 digits without the one that was read too much; absent for any other length.
std::optional<std::string> luhnDigitRemovalFix(std::string_view number, std::string_view binPrefix = {});

}  // namespace pravik
