#include "Parsers/IDCardBackParser.h"

#include <gmock/gmock.h>

#include "Utils/Text.h"
#include "support/CardPage.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using test::page;
using testing::Contains;
using testing::HasSubstr;

using Texts = std::vector<std::string>;
using Validity = IDCardBackParser::Validity;

const Validity nothing;
const Validity twentyYears{"20150301-20350301", "20150301", "20350301", false};
const Validity longTerm{"20150301-长期", "20150301", std::nullopt, true};

Texts lines(std::string_view text) {
  const auto parts = splitAtLineFeeds(text);
  return {parts.begin(), parts.end()};
}

TEST(IDCardBackParser, ReadsAWholeCard) {
  EXPECT_EQ(IDCardBackParser().parse(page(
                {"中华人民共和国", "居民身份证", "签发机关 云浮市公安局新平分局", "有效期限 2015.03.01-2035.03.01"})),
            (IDCardBackInfo{"云浮市公安局新平分局", "20150301-20350301", "20150301", "20350301", false}));
}

TEST(IDCardBackParser, NeedsTheOfficeOrTheValidity) {
  test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(IDCardBackParser().parse(page({"云浮市公安局"})), (IDCardBackInfo{"云浮市公安局", "", {}, {}, false}));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] 身份证背面解析成功")));
  EXPECT_EQ(IDCardBackParser().parse(page({"20150301-长期"})),
            (IDCardBackInfo{"", "20150301-长期", "20150301", {}, true}));
  log.clear();
  EXPECT_EQ(IDCardBackParser().parse(page({"中华人民共和国"})), std::nullopt);
  EXPECT_THAT(log.lines, testing::ElementsAre(HasSubstr("] 解析结果: 签发机关='', 有效期=''"),
                                              HasSubstr("] 签发机关和有效期均提取失败")));
  EXPECT_THAT(log.printed.front(), HasSubstr("========== ID Card Back OCR =========="));
}

TEST(IDCardBackParser, FindsTheIssuingOffice) {
  for (const auto& [expected, texts] : std::vector<std::pair<std::string, Texts>>{
           {"云浮市公安局",
            {"签发机关 云浮市公安局", "签发机关 -\u3000「云浮市公安局", "签发机关\n，云浮市公安局",
             "签发机关：\n云浮市公安局", "签发机关\n；\n云浮市公安局", "云浮市公安局\n签发机关",
             "签发 云浮市公安局机关", "机关签发\n云浮市公安局", "居民身份证\n 云浮市公安局 "}},
           {"云浮市公安局。", {"签发机关：云浮市公安局。"}},
           {"云浮市  公安局", {"云浮市 签发机关 公安局"}},
           {"望江路派出所", {"望江路派出所"}},
           {"", {"有效期限 2015.03.01-长期", ""}},
       })
    for (const std::string& text : texts)
      EXPECT_EQ(IDCardBackParser::extractIssuingAuthority(lines(text)), expected) << text;
}

TEST(IDCardBackParser, FindsTheValidityHoweverItWasRead) {
  for (const auto& [expected, texts] : std::vector<std::pair<Validity, Texts>>{
           // As printed.
           {twentyYears,
            {"有效期限 2015.03.01-2035.03.01", "有效期限 2015.03. 01 — 2035.03. 01", "20150301–20350301",
             "20150301 20350301", "20150301\n20350301", "２０１５０３０１-２０３５０３０１",
             "20150301-20350301\n长期"}},
           {longTerm, {"2015.03.01-长期", "20150301-长期", "20150301 长期"}},
           {nothing, {"有效期限 长期", ""}},
           // Not read as printed.
           {twentyYears,
            {"2015/03/01至2035/03/01", "2015.03.01～2035.03.01", "2015.03.01\n有效期限 2035.03.01",
             "有效期限 2015. 03 .01－2035 .03.01", "有效期限\n2015.03.\n01 ~ 2035.\n03.01",
             "有效期限 2015 03 01 2035 03 01", "有效期限 2015,03,01-2035·03。01", "2015 . 03. 01 至 2035. 03. 01"}},
           {longTerm, {"长期\n2015.03.01", "有效期限 2015 . 03. 01 至长期"}},
           {nothing,
            {"有效期限 12015 . 03. 01 至 2035. 03. 01 1", "有效期限 2035 .03.01 至 2015. 03 .01",
             "有效期限 2015 .03.01 至 2015. 03 .01", "有效期限 2015.13 .01 至 2035.03.01",
             "有效期限 2015.3 .01 至 2035.03.01", "2015. 03.01\n有效期限 2035 .03.01", "20151301 至 20350301"}},
       })
    for (const std::string& text : texts)
      EXPECT_EQ(IDCardBackParser::extractValidity(text, lines(text)), expected) << text;
}

TEST(IDCardBackParser, ReadsAPeriodFromAShortText) {
  for (const auto& [expected, texts] : std::vector<std::pair<Validity, Texts>>{
           {twentyYears, {"2015/03/01 2035.03.01", "20150301-20350301 长期"}},
           {longTerm, {"2015.03.01-长期"}},
           {{"长期", std::nullopt, std::nullopt, true}, {"长期"}},
           {{"20151399-20350301", "20151399", "20350301", false}, {"20151399-20350301"}},
           {nothing, {"20150301", "2015\n0301 长 期", ""}},
       })
    for (const std::string& text : texts) EXPECT_EQ(IDCardBackParser::parseValidityString(text), expected) << text;
}

TEST(IDCardBackParser, ChecksADate) {
  for (const std::string date : {"20150301", "20150231", "19000101", "21001231"})
    EXPECT_TRUE(IDCardBackParser::isValidDate(date)) << date;
  for (const std::string date : {"20151301", "20150001", "20150300", "20150332", "18991231", "21010101", "2015030",
                                 "201503011", "2015+3+1", "2015030x", "２０１５０３０１", ""})
    EXPECT_FALSE(IDCardBackParser::isValidDate(date)) << date;
}

TEST(IDCardBackParser, SurvivesHostileReadings) {
  for (const std::string& text : test::hostileTexts()) {
    const auto card = IDCardBackParser().parse(page({text, "签发机关 云浮市公安局"}));
    EXPECT_TRUE(card.has_value()) << text.substr(0, 20);
  }
}

}  // namespace
}  // namespace pravik
