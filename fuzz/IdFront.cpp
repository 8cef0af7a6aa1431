#include "Parsers/IDCardFrontParser.h"
#include "Utils/Text.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

// Blocks of text to the record of a portrait side.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::logEverything();
  const auto info = IDCardFrontParser{}.parse(fuzz::observationsIn(fuzz::asText(data, size)));
  if (!info) return 0;
  const std::string_view number = info->idNumber;
  fuzz::require(fuzz::isDigits(number.substr(0, 17), 17), "a citizen number begins with 17 digits");
  fuzz::require(number.size() == 18 && (number[17] == 'X' || fuzz::isDigits(number.substr(17), 1)),
                "a citizen number ends with one digit or X");
  fuzz::require(info->gender.empty() || info->gender == "男" || info->gender == "女", "a gender is one of two");
  fuzz::require(
      fuzz::isDigits(info->birthYear, 4) && fuzz::isDigits(info->birthMonth, 2) && fuzz::isDigits(info->birthDay, 2),
      "the parts of a birth date are digits");
  fuzz::require(info->birthDate == info->birthYear + "年" + info->birthMonth + "月" + info->birthDay + "日",
                "a birth date consists of its parts");
  const std::size_t length = characterCount(info->name);
  fuzz::require(info->name.empty() || (2 <= length && length <= 8), "a name has two to eight characters");
  fuzz::require(trimmed(info->address) == info->address, "an address is trimmed");
  return 0;
}
