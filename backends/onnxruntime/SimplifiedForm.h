#pragma once

#include <string>

namespace pravik::ppocr {

/// The simplified form of a character (UTF-8) that GB 2312, the set of simplified print, does not hold: the model knows
/// both forms, and where they look alike in a small print it sometimes picks the traditional one. The character itself
/// when it belongs to the set or has no other form there, as rare characters in names.
std::string simplifiedForm(const std::string& character);

}  // namespace pravik::ppocr
