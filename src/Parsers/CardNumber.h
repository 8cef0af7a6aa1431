#pragma once

#include <string>
#include <string_view>

namespace pravik {

// The rules of payment card numbers (ISO/IEC 7812-1). Numbers are plain ASCII digits without separators, unless a
// function says otherwise.

/// Whether a number can be that of a bank card: 16 to 19 digits that begin as the card networks' numbers do, and not
/// as a hotline's or an area code. The check digit is not looked at.
bool isValidCardNumber(std::string_view digits);

/// Whether the last digit is the check digit of the others (Luhn, ISO/IEC 7812-1 annex B). The digits of every
/// script count; any other character, a space too, fails. The empty text passes.
bool luhnCheck(std::string_view digits);

/// The display form: a single space between groups of four, counted from the left.
std::string formatCardNumber(std::string_view digits);

}  // namespace pravik
