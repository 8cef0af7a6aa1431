#include "Utils/RegexHelper.h"

#include <gmock/gmock.h>

namespace pravik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RegexHelper, MatchesInTheDialectOfThePatterns) {
  for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, bool>>{
           {"b+", "abbc", true},
           {"a", "A", false},
           {".", "\n", false},
           {R"(^\d+$)", "a1", false},
           {R"(^\d+\z)", "12\n", false},
           {R"(^\d+\z)", "12", true},
           {"^b", "a\nb", false},
           {R"(^\d\s\d\z)", "１\u3000٣", true},
           {R"(^[\u4e00-\u9fa5]{2}\z)", "张三", true},
           {R"((?<!\u4e00)男(?!\u4e00))", "一男", false},
           {R"((?<!\u4e00)男(?!\u4e00))", "二男二", true},
           {"^.{2}\\z", "𠀀𠀁", true},
           {"", "", true},
           {"x*", "", true},
           {"x", "", false},
           {"[", "[", false},
           {"^.\\z", "\xff", true},
           {R"(^\uFFFD+b\z)",
            "\xe4\xb8"
            "b",
            true},
       })
    EXPECT_EQ(RegexHelper::matches(pattern, text), matches) << pattern << " in " << text;
}

TEST(RegexHelper, CutsMatchesFromTheTextAsItIs) {
  EXPECT_EQ(RegexHelper::firstMatch(R"(\d+)", "𠀀姓12名34"), "12");
  EXPECT_EQ(RegexHelper::firstMatch("b.",
                                    "a\xff"
                                    "b\xfe"
                                    "c"),
            "b\xfe");
  EXPECT_EQ(RegexHelper::firstMatch("x", "abc"), std::nullopt);
  EXPECT_EQ(RegexHelper::firstMatch("(", "("), std::nullopt);

  EXPECT_THAT(RegexHelper::allMatches(R"((?:\d[ \-]?){15,18}\d)", "6222 0212 3456 7890 128"),
              ElementsAre("6222 0212 3456 7890 128"));
  EXPECT_THAT(RegexHelper::allMatches(R"(\d{2})", "𠀀12345"), ElementsAre("12", "34"));
  EXPECT_THAT(RegexHelper::allMatches("x*", "xa"), ElementsAre("x", "", ""));
  EXPECT_THAT(RegexHelper::allMatches("*", "*"), IsEmpty());
}

TEST(RegexHelper, CapturesGroupsOfTheFirstMatch) {
  EXPECT_EQ(RegexHelper::captureGroup(1, "性别\\s*(男|女)", "性别 女 性别 男"), "女");
  EXPECT_EQ(RegexHelper::captureGroup(0, "a(b)", "xab"), "ab");
  EXPECT_EQ(RegexHelper::captureGroup(1, "a(b)?", "ac"), std::nullopt);
  EXPECT_EQ(RegexHelper::captureGroup(2, "a(b)", "ab"), std::nullopt);
  EXPECT_EQ(RegexHelper::captureGroup(-1, "a(b)", "ab"), std::nullopt);

  EXPECT_THAT(RegexHelper::allCaptureGroups("(a)(b)?(c)", "acabc"), ElementsAre("a", "c"));
  EXPECT_THAT(RegexHelper::allCaptureGroups("a", "a"), IsEmpty());
  EXPECT_THAT(RegexHelper::allCaptureGroups("(a", "a"), IsEmpty());
}

TEST(RegexHelper, ReplacesMatches) {
  EXPECT_EQ(RegexHelper::replace(R"(\s+)", "张 \u3000三", ""), "张三");
  EXPECT_EQ(RegexHelper::replace(R"((\d)(\d))", "12𠀀34", "$2$1"), "21𠀀43");
  EXPECT_EQ(RegexHelper::replace("x", "张三", "y"), "张三");
  EXPECT_EQ(RegexHelper::replace("(", "a(b", "y"), "a(b");
  EXPECT_EQ(RegexHelper::replace("a", "abc", "$1"), "abc");
}

TEST(RegexHelper, GivesUpASearchThatWouldNotEnd) {
  EXPECT_FALSE(RegexHelper::matches("(a+)+b", std::string(60, 'a')));
  EXPECT_FALSE(RegexHelper::matches("(?:a|b)*c", std::string(1'000'000, 'a')));
  EXPECT_TRUE(RegexHelper::matches("(a+)+b", "aab")) << "the pattern is as good as before";
}

TEST(RegexHelper, OutlivesMorePatternsThanItKeeps) {
  for (int i = 0; i < 1000; ++i) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(RegexHelper::firstMatch(number + "!", "a" + number + "!"), number + "!");
  }
}

}  // namespace
}  // namespace pravik
