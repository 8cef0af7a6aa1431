#pragma once

#include <string>

namespace pravik {

/// What the portrait side of an identity card says. A field that was not found is empty.
struct IDCardFrontInfo {
  std::string name;
  /// "男" or "女".
  std::string gender;
  std::string ethnicity;
  /// Such as "1990年03月07日".
  std::string birthDate;
  /// Four digits.
  std::string birthYear;
  /// Two digits.
  std::string birthMonth;
  /// Two digits.
  std::string birthDay;
  std::string address;
  /// The citizen number: 18 characters, digits and possibly a final "X".
  std::string idNumber;

  bool operator==(const IDCardFrontInfo&) const = default;
};

}  // namespace pravik
