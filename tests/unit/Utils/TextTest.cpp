#include "Utils/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace pravik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view familyEmoji = "👩‍👧";
constexpr std::string_view accented = "e\u0301";

std::string repeated(std::string_view part, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += part;
  return text;
}

TEST(Text, CountsCharactersAsAReaderDoes) {
  const std::string text = "张𠀀" + std::string(accented) + std::string(familyEmoji) + "\r\n\xff";
  EXPECT_THAT(characters(text), ElementsAre("张", "𠀀", accented, familyEmoji, "\r\n", "\xff"));
  EXPECT_EQ(characterCount(text), 6);
  EXPECT_THAT(characters(""), IsEmpty());
}

TEST(Text, TrimsSpaceSeparatorsAndTabsButNotLineEnds) {
  struct Case {
    std::string text;
    std::string trimmed;
  };
  for (const auto& [text, expected] : std::vector<Case>{{" \t\u3000\u00a0张 三\u2003 ", "张 三"},
                                                        {" \n张三\r\n ", "\n张三\r\n"},
                                                        {"\u200b张\u200b", "\u200b张\u200b"},
                                                        {" \t\u3000", ""},
                                                        {"", ""},
                                                        {"\xe3\x80", "\xe3\x80"},
                                                        {" \xff ", "\xff"}}) {
    EXPECT_EQ(trimmed(text), expected);
  }
  EXPECT_EQ(trimmed("：· 张：三 ·：", U"：· "), "张：三");
  EXPECT_EQ(trimmedStart("：：张：", U"："), "张：");
}

TEST(Text, SplitsAtRunsOfWhitespace) {
  EXPECT_THAT(splitAtWhitespace(" 张三\t\u3000李 四\n五 "), ElementsAre("张三", "李", "四\n五"));
  EXPECT_THAT(splitAtWhitespace(" \t"), IsEmpty());
  EXPECT_THAT(splitAtWhitespace(""), IsEmpty());
}

TEST(Text, TurnsDigitsOfEveryScriptIntoAscii) {
  EXPECT_EQ(asciiDigits("1２٣𝟜 一②½x"), "1234");
  EXPECT_EQ(withAsciiDigits("第２号٣\xff"), "第2号3\xff");
}

TEST(Text, FindsAndReplacesParts) {
  constexpr std::array<std::string_view, 2> words{"公民", "住址"};
  EXPECT_TRUE(containsAny("我的住址", words));
  EXPECT_FALSE(containsAny("住 址", words));
  EXPECT_EQ(replacingAll("aaab", "aa", "x"), "xab");
  EXPECT_EQ(removingAll(" 1 2 ", " "), "12");
  EXPECT_EQ(joined(std::vector<std::string>{"a", "", "b"}, " "), "a  b");
  EXPECT_EQ(uppercased("UnionPay ß ｖ 张"), "UNIONPAY SS Ｖ 张");
}

TEST(Text, TakesLongAndBrokenText) {
  constexpr std::size_t length = 1'000'000;
  for (const std::string_view part :
       {std::string_view(" "), std::string_view("\u0301"), std::string_view("𠀀"), familyEmoji,
        std::string_view("\xff"), std::string_view("\xf0\x9f"), std::string_view("\0", 1), std::string_view("🇨")}) {
    const std::string text = repeated(part, length);
    std::size_t bytes = 0;
    for (const std::string_view character : characters(text)) bytes += character.size();
    EXPECT_EQ(bytes, text.size());
    EXPECT_EQ(trimmed(text).empty(), part == " ");
    EXPECT_EQ(asciiDigits(text), "");
    EXPECT_EQ(withAsciiDigits(text), text);
    EXPECT_GE(uppercased(text).size(), length);
    EXPECT_EQ(splitAtWhitespace(text).size(), part == " " ? 0 : 1);
  }
}

}  // namespace
}  // namespace pravik
