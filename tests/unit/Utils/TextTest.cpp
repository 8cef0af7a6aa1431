#include "Utils/Text.h"

#include <gmock/gmock.h>

#include <array>

namespace pravik {
namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view familyEmoji = "👩‍👧";
constexpr std::string_view accented = "e\u0301";

TEST(Text, CountsCharactersAsAReaderDoes) {
  const std::string text = "张𠀀" + std::string(accented) + std::string(familyEmoji) + "\r\n\xff";
  EXPECT_THAT(characters(text), ElementsAre("张", "𠀀", accented, familyEmoji, "\r\n", "\xff"));
  EXPECT_EQ(characterCount(text), 6);
  EXPECT_THAT(characters(""), IsEmpty());
}

TEST(Text, TrimsSpaceSeparatorsAndTabsButNotLineEnds) {
  for (const auto& [text, expected] :
       std::vector<std::pair<std::string, std::string>>{{" \t\u3000\u00a0张 三\u2003 ", "张 三"},
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
  constexpr std::size_t length = 200'000;
  for (const std::string_view part : {" "sv, "\u0301"sv, "𠀀"sv, familyEmoji, "\xff"sv, "\xf0\x9f"sv, "\0"sv, "🇨"sv}) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += part;
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
