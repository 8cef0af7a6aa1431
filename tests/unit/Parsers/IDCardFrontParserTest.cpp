#include "Parsers/IDCardFrontParser.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/CardPage.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using test::block;
using test::page;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string number = "11010119900307123X";
const std::string numberLine = "公民身份号码 " + number;

using Lines = std::vector<std::string>;

/// The record of lines that need not hold a number: one is added below them.
IDCardFrontInfo parsed(Lines lines) {
  lines.push_back(numberLine);
  return IDCardFrontParser().parse(page(lines)).value();
}

TEST(IDCardFrontParser, ReadsAWholeCard) {
  const Observations card{
      block("姓名", 0.05, 0.12),         block("林晓岚", 0.2, 0.121),   block("女", 0.2, 0.241),
      block("性别", 0.05, 0.24),         block("民族 汉", 0.35, 0.245), block("出生", 0.05, 0.36),
      block("1990年3月7日", 0.2, 0.361), block("住址", 0.05, 0.5),      block("云浮市新平区", 0.2, 0.5),
      block("望江路18号", 0.2, 0.56),    block(" 302室 ", 0.2, 0.62),   block("公民身份号码", 0.05, 0.86),
      block(number, 0.35, 0.861)};
  EXPECT_EQ(IDCardFrontParser().parse(card), (IDCardFrontInfo{"林晓岚", "女", "汉", "1990年03月07日", "1990", "03",
                                                              "07", "云浮市新平区望江路18号302室", number}));
}

TEST(IDCardFrontParser, FindsTheCitizenNumber) {
  for (const auto& [expected, texts] : std::vector<std::pair<std::string, Lines>>{
           {number,
            {"公民身份号码" + number, "110101 19900307 123X", "1 1 0 1 0 1 1 9 9 0 0 3 0 7 1 2 3 x",
             "11010119900307123×", "11010119900307123x", "99" + number}},
           {"110101199003071231",
            {"110101199003071231", "１１０１０１１９９００３０７１２３１", "１１０１０１ １９９００３０７ １２３１",
             "1１０１０１１９９００３０７１２３１"}},
           {"",
            {"11010119900307123", "010101199003071231", "110101189903071231", "110101199013071231",
             "110101199003321231", "110101199003O71231", "110101\n19900307123X"}},
       })
    for (const std::string& line : texts) {
      const auto card = IDCardFrontParser().parse(page({"姓名 林晓岚", line}));
      EXPECT_EQ(card ? card->idNumber : "", expected) << line;
    }
}

TEST(IDCardFrontParser, GivesUpWithoutANumberAndSaysWhatItFound) {
  test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(IDCardFrontParser().parse(page({"姓名 林晓岚", "性别 女 民族 汉", "住址 望江路18号"})), std::nullopt);
  EXPECT_THAT(log.levels, ElementsAre(OCRLogger::Level::warning, OCRLogger::Level::debug, OCRLogger::Level::error));
  EXPECT_THAT(log.lines,
              ElementsAre(HasSubstr("] 未提取到身份证号，全文:\n姓名 林晓岚\n性别 女 民族 汉\n住址 望江路18号"),
                          HasSubstr("] 解析结果: 姓名='林晓岚', 性别='女', 民族='汉', 住址='望江路18号'"),
                          HasSubstr("] 身份证号提取失败，放弃解析")));
  EXPECT_THAT(log.printed.front(), HasSubstr("========== ID Card Front OCR =========="));

  log.clear();
  parsed({});
  EXPECT_THAT(log.lines, Contains(HasSubstr("] 身份证正面解析成功: " + number)));
}

TEST(IDCardFrontParser, PrefersThePrintedBirthDate) {
  for (const auto& [line, expected] :
       std::vector<std::pair<std::string, std::string>>{{"出生 1991年12月30日", "1991年12月30日"},
                                                        {"出生1991年 1月 2日", "1991年01月02日"},
                                                        {"出生 １９９１年１月２日", "1991年01月02日"},
                                                        {"出生 1991年", "1990年03月07日"},
                                                        {"出生", "1990年03月07日"}}) {
    const IDCardFrontInfo card = parsed({line});
    EXPECT_EQ(card.birthDate, expected) << line;
    EXPECT_EQ(card.birthYear + "年" + card.birthMonth + "月" + card.birthDay + "日", expected);
  }
}

TEST(IDCardFrontParser, FindsTheName) {
  for (const auto& [lines, expected] : std::vector<std::pair<Lines, std::string>>{
           {{"姓名 林晓岚"}, "林晓岚"},
           {{"姓名林晓岚"}, "林晓岚"},
           {{"姓 名：林晓岚 女"}, "林晓岚"},
           {{"姓、名，·\u3000林晓岚\t汉族"}, "林晓岚"},
           {{"姓名 阿依古丽·买买提"}, "阿依古丽·买买提"},
           {{"姓名 木•合"}, "木•合"},
           {{"姓名", "林晓岚 女"}, "林晓岚"},
           {{"姓名", "性别 女", "林晓岚"}, "林晓岚"},
           {{"姓名 林", "江小白"}, "江小白"},
           {{"居民身份证", "林晓岚", "江小白"}, "林晓岚"},
           {{"姓名 一二三四五六七八九", "性别 女"}, ""},
           {{"姓名 林晓岚\n", "性别 女"}, ""},
           {{"姓名 Lin", "性别 女"}, ""},
           {{"姓名", " "}, ""},
           {{"林"}, ""},
       })
    EXPECT_EQ(parsed(lines).name, expected) << lines.front();
}

TEST(IDCardFrontParser, FindsGenderAndEthnicity) {
  for (const auto& [line, gender, ethnicity] : std::vector<std::tuple<std::string, std::string, std::string>>{
           {"性别女民族汉", "女", "汉"},
           {"性别 男 民族 维吾尔", "男", "维吾尔"},
           {"性别 X 女 回", "女", "回"},
           {"性别 X 女男", "男", ""},
           {"性别", "", ""},
           {"先生 男", "男", ""},
           {"女 壮", "女", "壮"},
           {"一男 女", "女", ""},
           {"一女", "", ""},
           {"回 汉", "", "汉"},
           {"民族 回 汉", "", "回"},
       }) {
    const IDCardFrontInfo card = parsed({line});
    EXPECT_EQ(card.gender, gender) << line;
    EXPECT_EQ(card.ethnicity, ethnicity) << line;
  }
}

TEST(IDCardFrontParser, FindsTheAddressByItsLabel) {
  for (const auto& [lines, expected] : std::vector<std::pair<Lines, std::string>>{
           {{"住址 云浮市新平区", " 望江路 18号 ", "302室"}, "云浮市新平区望江路 18号302室"},
           {{"住址", "云浮市新平区"}, "云浮市新平区"},
           {{"佳址云浮市新平区"}, "云浮市新平区"},
           {{"往 址 云浮市新平区"}, "云浮市新平区"},
           {{"住址 云浮市", "身份号 12", "302室"}, "云浮市"},
           {{"住址 云浮市", "110101 19900307 1231", "302室"}, "云浮市"},
           {{"佳址", "公民", "住址 云浮市"}, "云浮市"},
           {{"住址", "公民身份号码", "302室"}, ""},
       })
    EXPECT_EQ(parsed(lines).address, expected) << lines.front();
}

TEST(IDCardFrontParser, FindsTheAddressBetweenTheLinesAroundIt) {
  for (const auto& [card, expected] : std::vector<std::pair<Observations, std::string>>{
           {{block("出生1990年3月7日", 0.1, 0.4), block("云浮市新平区", 0.2, 0.45), block("望江路18号", 0.2, 0.6),
             block(numberLine, 0.1, 0.7), block("背面", 0.1, 0.8)},
            "云浮市新平区望江路18号"},
           {{block("1990年", 0.1, 0.1), block("云浮市", 0.2, 0.2), block(number, 0.1, 0.7)}, "云浮市"},
           {{block("林晓岚", 0.1, 0.2), block("云浮市", 0.1, 0.35), block(number, 0.1, 0.9)}, "云浮市"},
           {{block("1990年", 0.1, 0.1), block("住", 0.1, 0.2), block("址 云浮市", 0.1, 0.3), block(number, 0.1, 0.7)},
            "云浮市"},
       })
    EXPECT_EQ(IDCardFrontParser().parse(card)->address, expected);
}

TEST(IDCardFrontParser, SurvivesHostileReadings) {
  for (const std::string& text : test::hostileTexts())
    EXPECT_TRUE(IDCardFrontParser().parse(page({text, number})).has_value()) << text.substr(0, 20);
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  Observations blocks = page({"林晓岚", "云浮市", "望江路", number});
  blocks[0].boundingBox = {nan, nan, nan, nan};
  blocks[1].boundingBox = {-5, 7, -1, -1};
  blocks[2].boundingBox = {infinity, -infinity, infinity, infinity};
  EXPECT_EQ(IDCardFrontParser().parse(blocks)->idNumber, number);
}

}  // namespace
}  // namespace pravik
