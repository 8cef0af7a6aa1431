#include "Reading/RecordChecks.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace pravik {
namespace {

/// What a check of a record says; absent when there is nothing to compare.
std::optional<bool> result(const Record& record, std::string_view name) {
  for (const RecordCheck& check : checksOf(record))
    if (check.kind.name == name) return check.passed;
  ADD_FAILURE() << "there is no check " << name;
  return std::nullopt;
}

TEST(Checks, TheCheckCharacterFollowsTheStandard) {
  const std::vector<std::pair<std::string, bool>> cases{{"11010519491231002X", true},   // the example of GB 11643-1999
                                                        {"440524188001010014", true},   // and its second one
                                                        {"110105194912310020", false},  // another last character
                                                        {"11010519491231003X", false},  // one digit changed
                                                        {"11010591491231002X", false},  // two neighbours changed places
                                                        {"1101051949123100X", false},   // too short
                                                        {"11010519491231002x", false},  // the record has a capital X
                                                        {"", false}};
  for (const auto& [number, valid] : cases) EXPECT_EQ(hasValidCheckCharacter(number), valid) << number;
}

TEST(Checks, TheNumberIsComparedWithWhatIsPrinted) {
  const IDCardFrontInfo agreeing{"", "女", "", "1949年12月31日", "1949", "12", "31", "", "11010519491231002X"};
  for (const char* check : {"checkDigit", "birthDateMatches", "genderMatches"})
    EXPECT_EQ(result(agreeing, check), true);
  IDCardFrontInfo other = agreeing;
  other.gender = "男";
  other.birthDay = "30";
  EXPECT_EQ(result(other, "birthDateMatches"), false);
  EXPECT_EQ(result(other, "genderMatches"), false);
  other.gender.clear();
  EXPECT_EQ(result(other, "genderMatches"), std::nullopt);
}

TEST(Checks, ACardMustStartBeforeItEnds) {
  const auto check = [](std::optional<std::string> start, std::optional<std::string> end, bool longTerm) {
    return result(IDCardBackInfo{"", "", std::move(start), std::move(end), longTerm}, "startBeforeEnd");
  };
  EXPECT_EQ(check("20150301", "20350301", false), true);
  EXPECT_EQ(check("20350301", "20150301", false), false);
  EXPECT_EQ(check("20150301", "20150301", false), false);
  EXPECT_EQ(check("20150301", std::nullopt, true), true);
  EXPECT_EQ(check(std::nullopt, std::nullopt, true), std::nullopt);
}

}  // namespace
}  // namespace pravik
