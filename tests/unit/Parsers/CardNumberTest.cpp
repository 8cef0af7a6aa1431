#include "Parsers/CardNumber.h"

#include <gmock/gmock.h>

#include "Parsers/LuhnRepair.h"
#include "Parsers/OCRDigits.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(CardNumber, IsValidByLengthAndPrefix) {
  for (const char* valid :
       {"6222021234567890", "6222021234567890128", "4111111111111111", "5112345678901234", "5812345678901234",
        "9112345678901234", "3012345678901234", "3712345678901234", "6012345678901234", "6812345678901234"})
    EXPECT_TRUE(isValidCardNumber(valid)) << valid;
  for (const char* invalid :
       {"", "622202123456789", "62220212345678901234", "4008001234567890", "8001234567890123", "5012345678901234",
        "5912345678901234", "6512345678901234", "3112345678901234", "1234567890123456", "622202123456789X",
        "6222 0212 3456 7890", "６２２２０２１２３４５６７８９０"})
    EXPECT_FALSE(isValidCardNumber(invalid)) << invalid;
}

TEST(CardNumber, PassesTheLuhnCheckWithARightCheckDigit) {
  for (const char* right :
       {"", "0", "18", "6222021234567894", "6222021234567890128", "６２２２０２１２３４５６７８９４"})
    EXPECT_TRUE(luhnCheck(right)) << right;
  for (const char* wrong : {"1", "6222021234567890", "6222 0212 3456 7894", "622202123456789a"})
    EXPECT_FALSE(luhnCheck(wrong)) << wrong;
}

TEST(CardNumber, IsShownInGroupsOfFour) {
  EXPECT_EQ(formatCardNumber("6222021234567890128"), "6222 0212 3456 7890 128");
  EXPECT_EQ(formatCardNumber(""), "");
}

TEST(OCRDigits, CorrectsUpToThreeCharacters) {
  const auto corrected = [](std::string_view text) { return correctOCRDigitsUsing(text, ocrDigitCorrections()); };
  EXPECT_EQ(corrected("6222O212345678901"), "62220212345678901");
  EXPECT_EQ(corrected("12 34-５６"), "123456");
  EXPECT_EQ(corrected("1！,2"), "112") << "a comma is dropped and counts";
  EXPECT_EQ(corrected("OOOO"), std::nullopt);
  EXPECT_EQ(corrected("6222 (有)。1"), std::nullopt);
  EXPECT_EQ(corrected("一二三"), "") << "Chinese numerals are no digits";
}

TEST(OCRDigits, TriesABForAnEightAndForASix) {
  const auto variants = ocrCorrectedVariants("62B2");
  ASSERT_EQ(variants.size(), 2U);
  EXPECT_EQ(variants[0].digits + std::string(variants[0].label), "6282");
  EXPECT_EQ(variants[1].digits + std::string(variants[1].label), "6262/B6");
  EXPECT_EQ(ocrCorrectedVariants("62S2").size(), 1U);
  EXPECT_TRUE(ocrCorrectedVariants("BANK").size() == 0) << "B and A, and two letters that stand for nothing";
}

TEST(LuhnRepair, ChangesADigitOnlyWhenOneChangeGivesAValidNumber) {
  test::LogCapture log(OCRLogger::Level::info);
  EXPECT_EQ(luhnSingleDigitFix("2222021234567894"), "6222021234567894");
  EXPECT_THAT(log.lines, ElementsAre(HasSubstr("] Luhn单位修正: 位置0 '2'→'6' dist=4")));
  log.clear();
  EXPECT_EQ(luhnSingleDigitFix("6222021234567890"), std::nullopt);
  EXPECT_THAT(log.lines, ElementsAre(AllOf(HasSubstr("] Luhn单位修正: 发现"), HasSubstr(" 个可行修正("),
                                           HasSubstr("位置15'0'→'4'(dist=4)"), HasSubstr(")，放弃以免误改"))));
  EXPECT_EQ(luhnSingleDigitFix("2222021234567894", "2222"), std::nullopt) << "the prefix is printed twice";
  EXPECT_EQ(luhnSingleDigitFix("2222021234567894", "6222"), "6222021234567894") << "another prefix protects nothing";
}

TEST(LuhnRepair, RemovesADigitOnlyFromSeventeenAndOnlyWhenOneRemovalFits) {
  test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(luhnDigitRemovalFix("62222914017776311"), "6222291417776311");
  EXPECT_THAT(log.lines, ElementsAre(HasSubstr("] Luhn删位修正: 删除位置8 6222291417776311")));
  EXPECT_EQ(luhnDigitRemovalFix("62222914017776311", "622229140"), std::nullopt);
  log.clear();
  EXPECT_EQ(luhnDigitRemovalFix("62220212345678894"), std::nullopt) << "either 8 gives the same number";
  EXPECT_THAT(log.lines, ElementsAre(AllOf(HasSubstr("] Luhn删位修正: 发现"), HasSubstr(" 个可行删除("),
                                           HasSubstr("13→6222021234567894, 14→6222021234567894"))));
  EXPECT_EQ(luhnDigitRemovalFix("6222291401777631"), std::nullopt);
  EXPECT_EQ(luhnDigitRemovalFix("622229140177763110"), std::nullopt);
}

}  // namespace
}  // namespace pravik
