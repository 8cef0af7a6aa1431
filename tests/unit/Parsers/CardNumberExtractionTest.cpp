#include "Parsers/CardNumberExtraction.h"

#include <gmock/gmock.h>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberFusion.h"
#include "support/CardPage.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using test::block;
using test::page;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

using Texts = std::vector<std::string>;

std::string numberIn(const Observations& observations) {
  const auto number = extractCardNumber(observations);
  return number ? number->digits : "";
}

/// Blocks of one row from left to right; a block is as wide as its text is long.
Observations row(const Texts& texts, double top = 0.5) {
  Observations blocks;
  double left = 0.05;
  for (const std::string& text : texts) {
    blocks.push_back(block(text, left, top));
    blocks.back().boundingBox.width = 0.03 * static_cast<double>(text.size());
    left += blocks.back().boundingBox.width + 0.03;
  }
  return blocks;
}

TEST(CardNumberExtraction, FindsANumberHoweverItWasRead) {
  const std::string whole = "6222021234567894";
  for (const auto& [name, blocks, number, logText] :
       std::vector<std::tuple<std::string, Observations, std::string, std::string>>{
           {"one block", page({"6222 0212-3456 7894"}), whole, "策略1a(单块纯数字) 候选卡号: "},
           {"full-width", page({"６２２２０２１２３４５６７８９４"}), whole, "策略1a"},
           {"letters", page({"6222 O2I2 3456 7B94"}), whole, "策略1b(单块纠错) 候选卡号: "},
           {"a B for a 6", page({"6222 0212 345B 7894"}), whole, "策略1b(单块纠错/B6) 候选卡号: "},
           {"amid text", page({"卡号：6222 0212 3456 7894，请妥善保管您的卡片"}), whole, "策略1c(单块正则) 候选卡号: "},
           {"groups", row({"6222", "0212", "3456", "7894"}), whole, "策略2(位置拼接) 候选卡号: "},
           {"groups with letters", row({"6222", "O212", "3456", "7B94"}), whole, "策略2(位置拼接+纠错) 候选卡号: "},
           {"groups with a B", row({"6222", "0212", "345B", "7894"}), whole, "策略2(位置拼接+纠错B6) 候选卡号: "},
           {"nineteen digits", page({"6222021234567890128"}), "6222021234567890128",
            "候选排序结果: 6222021234567890128 luhn=true"},
           {"fifteen digits", page({"622202123456789"}), "", ""},
           {"twenty digits", page({"6222 0212 3456 7890 1286"}), "", ""},
           {"a number amid more groups", page({"1228 6222 0212 3456 7894 2031"}), whole, "策略1c(单块正则) 候选卡号: "},
           {"a number in a row with more groups", row({"6222", "0212", "3456", "7894", "1228", "2031"}), whole,
            "策略2(位置拼接) 候选卡号: "},
           {"more digits", page({"号6222021234567890128622202123456789401"}), "", ""},
           {"a hotline", page({"客服热线 4008 0012 3456 7890"}), "", ""},
           {"an empty reading", {}, "", ""},
       }) {
    const test::LogCapture log(OCRLogger::Level::debug);
    EXPECT_EQ(numberIn(blocks), number) << name;
    if (!logText.empty()) {
      EXPECT_THAT(log.lines, Contains(HasSubstr("] " + logText))) << name;
    }
  }
}

TEST(CardNumberExtraction, RanksWhatPassesTheLuhnCheckFirst) {
  EXPECT_EQ(numberIn(page({"6222021234567890", "有效 6222021234567894 止于此日"})), "6222021234567894")
      << "over what was read more directly";
  EXPECT_EQ(numberIn(page({"6222021234567890128", "6222021234567894"})), "6222021234567894") << "16 digits before 19";
  EXPECT_EQ(numberIn(page({"622202123456789013", "6222021234567890"})), "6222021234567890") << "no repair, so the best";
  EXPECT_EQ(extractCardNumber(page({"62222914017776311"})),
            (ExtractedCardNumber{"6222291417776311", "62222914017776311"}))
      << "a repair is told beside what was read";
}

TEST(CardNumberExtraction, CompletesANumberWithAHint) {
  Observations completed = row({"22", "0212", "3456", "7894"});
  completed.push_back(block("6222", 0.05, 0.6));
  const test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(extractCardNumber(completed), (ExtractedCardNumber{"6222021234567894", "22021234567894"}));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] 检测到 BIN 提示数字: 6222")));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] BIN补全: 补充前缀 '62' → 6222021234567894")));
  EXPECT_EQ(numberIn(page({"9558", "1222021234567894"})), "") << "the hint does not overlap";
  EXPECT_EQ(numberIn(page({"6222", "2021234567894"})), "") << "the hint overlaps by one digit";
  EXPECT_EQ(numberIn(page({"6222", "22021234567890"})), "") << "the completed number fails the Luhn check";
}

TEST(CardNumberExtraction, ReplacesAMisreadBeginningWithAHint) {
  const test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(extractCardNumber(page({"4222021234567894", "6222"})),
            (ExtractedCardNumber{"6222021234567894", "4222021234567894"}));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] BIN前缀替换: 6222021234567894")));
  EXPECT_EQ(numberIn(page({"4111111111111111", "6222"})), "4111111111111111") << "it passes the Luhn check";
  EXPECT_EQ(numberIn(page({"6222021234567890", "9558"})), "6222021234567890") << "nothing like the hint";
}

TEST(CardNumberExtraction, DropsWhatContradictsAHintThatAnotherCandidateConfirms) {
  const test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(numberIn(page({"4222021234567890", "6222021234567890", "6222"})), "6222021234567890");
  EXPECT_THAT(log.lines, Contains(testing::AllOf(HasSubstr("] BIN交叉验证: 前缀 6222"), HasSubstr(" 个候选，排除 "))));
  EXPECT_EQ(numberIn(page({"4111111111111111", "6222021234567890", "6222"})), "4111111111111111")
      << "what passes the Luhn check stays";
  EXPECT_EQ(numberIn(page({"4222021234567890", "95588"})), "4222021234567890") << "a hotline drops nothing";
}

TEST(CardNumberExtraction, CompletesAShortLastGroupByItsCheckDigit) {
  const test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(extractCardNumber(row({"6222", "0212", "3456", "789"})),
            (ExtractedCardNumber{"6222021234567894", "622202123456789"}));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] 策略6(短组末位补全,位置15) 候选卡号: 6222021234567894")));
  EXPECT_EQ(numberIn(page({"6222 0212 3456 789"})), "6222021234567894");

  Observations wide = row({"6222", "0212", "3456", "789"});
  wide.back().boundingBox.width = wide.front().boundingBox.width;
  EXPECT_EQ(numberIn(wide), "") << "the lost digit may be in the middle";
  for (const Texts& groups : {Texts{"6222", "021", "3456", "7894"}, Texts{"6222", "0212", "3456", "78"},
                              Texts{"0212", "3456", "789"}, Texts{"6222", "0212", "3456", "789", "X"}})
    EXPECT_EQ(numberIn(row(groups)), "") << testing::PrintToString(groups);
}

TEST(CardNumberExtraction, SurvivesWhatNoCardSays) {
  for (const std::string& text : test::hostileTexts()) {
    const std::string number = numberIn(page({text}));
    EXPECT_TRUE(number.empty() || isValidCardNumber(number)) << text.substr(0, 20);
    extractCardNumberFragments(page({text}));
  }
}

TEST(BINHints, AreGroupsOfFourOrFiveBesideTheNumber) {
  const std::vector<Observations> rows{row({"6222", "0212", "3456", "7890"}), row({" 6222 ", "１２３４５"}),
                                       row({"622848", "12/28", "A123"})};
  EXPECT_THAT(extractBINHints(rows), ElementsAre("6222", "12345"));
  EXPECT_THAT(plausibleBINHints(Texts{"2026", "6222", "95588", "6222", "8008", "9558"}), ElementsAre("6222", "9558"));
}

TEST(BINHints, TellWhereAFragmentBegins) {
  EXPECT_EQ(binSuffixOffset("62220212", "6222"), 0U);
  EXPECT_EQ(binSuffixOffset("2220212", "6222"), 1U);
  EXPECT_EQ(binSuffixOffset("20212", "6222"), 3U);
  EXPECT_EQ(binSuffixOffset("20212", "6222", 2), std::nullopt);
  EXPECT_EQ(binSuffixOffset("0212", "6222"), std::nullopt);
  EXPECT_EQ(binSuffixOffset("", "6222"), std::nullopt);
}

TEST(CardNumberFragments, AreTheGroupsAndTheRowsRawAndCorrected) {
  EXPECT_THAT(extractCardNumberFragments(row({"6222", "O212 34"})), ElementsAre("6222", "0212", "21234", "6222021234"));
  EXPECT_THAT(extractCardNumberFragments(page({"VALID THRU", "123", "12/28"})), testing::IsEmpty());
}

TEST(CardNumberFusion, PutsANumberTogether) {
  for (const auto& [name, fragments, hints, number] :
       std::vector<std::tuple<std::string, Texts, Texts, std::optional<std::string>>>{
           {"overlapping fragments", {"34567894", "2123456", "22202123"}, {"6222"}, "6222021234567894"},
           {"a majority", {"6222021234567894", "6222021234567894", "6222021234567890"}, {}, "6222021234567894"},
           {"a tie", {"6222021234567894", "6222021234567890"}, {}, "6222021234567894"},
           {"one digit that nobody read", {"622202123456", "023456"}, {"6222"}, std::nullopt},
           {"no hint and nothing complete", {"22202123", "2123456", "34567894"}, {}, std::nullopt},
           {"a gap", {"62220212", "7894"}, {"6222"}, std::nullopt},
           {"a row that has lost a digit somewhere", {"622202123456789"}, {"6222"}, std::nullopt},
           {"two places for a fragment", {"6222622262", "2262"}, {"6222"}, std::nullopt},
           {"a complete number that fails", {"6222021234567890"}, {}, std::nullopt},
       })
    EXPECT_EQ(fuseCardNumber(fragments, hints, fusedCardNumberLength), number) << name;
}

}  // namespace
}  // namespace pravik
