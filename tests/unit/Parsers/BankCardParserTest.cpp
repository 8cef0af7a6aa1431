#include "Parsers/BankCardParser.h"

#include <gmock/gmock.h>

#include "Parsers/BankCardDetails.h"
#include "Parsers/BankName.h"
#include "support/CardPage.h"
#include "support/LogCapture.h"

namespace pravik {
namespace {

using test::page;
using testing::Contains;
using testing::HasSubstr;
using CardType = BankCardInfo::CardType;
using Texts = std::vector<std::string>;

TEST(BankCardParser, ReadsAWholeCard) {
  const test::LogCapture log(OCRLogger::Level::debug);
  EXPECT_EQ(BankCardParser().parse(page({"中国工商银行", "6222 0212 3456 7894", "VALID THRU", "ZHANG SAN", "信用卡"})),
            (BankCardInfo{"6222 0212 3456 7894", "6222021234567894", "中国工商银行", CardType::credit, "ZHANG SAN"}));
  EXPECT_THAT(log.printed.front(), HasSubstr("========== Bank Card OCR =========="));
  EXPECT_THAT(log.lines, Contains(HasSubstr("] 卡号提取成功: 6222021234567894")));
}

TEST(BankCardParser, NeedsANumberAndKeepsTheRestWithoutOne) {
  const Observations blocks = page({"招商银行", "储蓄卡", "LI SI"});
  EXPECT_EQ(BankCardParser().parse(blocks), std::nullopt);
  EXPECT_EQ(BankCardParser().parsePartialInfo(blocks),
            (PartialBankCardInfo{std::nullopt, "招商银行", CardType::debit, "LI SI"}));
  EXPECT_EQ(BankCardParser().parsePartialInfo(page({"6222021234567890128"})),
            (PartialBankCardInfo{"6222 0212 3456 7890 128", std::nullopt, CardType::debit, std::nullopt}));
}

TEST(BankName, IsFoundInEveryWayThatACardTellsIt) {
  for (const auto& [bank, texts] : std::vector<std::pair<std::optional<std::string>, Texts>>{
           {"中国工商银行",
            {"中國工商銀行", "Industrial and Commercial Bank of China", "INDUSTRIAL AND\nCOMMERCIAL BANK"}},
           {"中国工商银行", {"INDUSTRIAL AND COMMERCIAL\nBANK OF CHINA"}},
           {"中国邮政储蓄银行", {"中国邮政储蓄银行", "郵政儲蓄銀行", "POSTAL SAVINGS BANK\nOF CHINA"}},
           {"某某农村信用社", {"某某農村信用社"}},
           {"云山农村信用合作社", {"云山农村信用合作社\nRURAL CREDIT COOPERATIVES"}},
           {"云山农村信用合作联社", {"云山農村信用合作联社"}},
           {"云山省农村信用社联合社", {"云山省农村信用社联合社"}},
           {"农村商业银行", {"某某农村商业银行"}},
           {"杭州银行", {"杭州銀行"}},
           {"招商银行", {"招商銀行", "www.CMBCHINA.com", "CMB", "MERCHANTS\nCITICS"}},
           {"兴业银行", {"興業銀行", "INDUSTRIAL BANK"}},
           {"中国民生银行", {"CHINAMINSHENG BANK", "CMBC"}},
           {"中国银行", {"中國銀行", "Bank of China"}},
           {"中国建设银行", {"中國建設銀行", "CHINA CONSTRUCTION\n"}},
           {"中国农业银行", {"農業銀行", "AGRICULTURAL\nBANK OF"}},
           {"上海浦东发展银行", {"上海浦東發展銀行", "PUDONG\nDEVELOPMENT BANK"}},
           {std::nullopt, {"请联系发卡银行", "ABCD icbc", "MERCHANTS\nCOMMUNICATIONS", "PING\nPONG", ""}},
       })
    for (const std::string& text : texts) EXPECT_EQ(extractBankName(text), bank) << text;
}

TEST(CardType, IsToldByTheTextOrTheNumber) {
  for (const auto& [text, number, type] : std::vector<std::tuple<std::string, std::string, std::optional<CardType>>>{
           {"借记卡 CREDIT", "", CardType::debit},
           {"Debit", "", CardType::debit},
           {"信用卡", "6222021234567890128", CardType::credit},
           {"Not Valid Unless Signed", "", CardType::credit},
           {"本卡须签名后使用", "", CardType::credit},
           {"CREDIT\nUnionPay", "", CardType::credit},
           {"Rural Credit Cooperative 农村信用社", "", std::nullopt},
           {"CREDIT\nUNION", "", std::nullopt},
           {"云山农村信用合作联社\nRURAL CREDIT COOPERATIVES", "", std::nullopt},
           {"Credit Co-operative Credit Card", "", CardType::credit},
           {"预付卡", "6222 0212 3456 7890 128", CardType::debit},
           {"礼品卡", "6222021234567894", CardType::prepaid},
           {"金卡", "6222021234567894", std::nullopt},
       })
    EXPECT_EQ(extractCardType(text, number), type) << text;
}

TEST(CardholderName, IsInCapitalsAndNoWordOfTheCard) {
  for (const auto& [name, texts] : std::vector<std::pair<std::optional<std::string>, Texts>>{
           {"ZHANG SAN", {"ZHANG SAN", "VALID THRU\nZHANG SAN\nVISA"}},
           {"LI SI MIN", {"LI SI MIN"}},
           {"LV NA", {"LV NA", "HN GD\nUNION PAY\nLV NA"}},
           {"NG WEI MING", {"NG WEI MING"}},
           {"NG AN", {"NG AN"}},
           {std::nullopt,
            {"CCB HN MONTH", "MEMBER SINCE", "QUICK PASS", "ICBC BEIJING", "HN GD", "ELECTRONIC USE ONLY"}},
           {std::nullopt, {"UNION PAY", "STANDARD CHARTERED", "JPMORGAN CHASE", "OF NANJING", "HSBC PREMIER"}},
           {std::nullopt, {"CHINA UNIONPAY\nMONTH YEAR", "Zhang San", "ZHANG\nSAN", "Z S", "PLATINUM ZHANG SAN"}},
       })
    for (const std::string& text : texts) EXPECT_EQ(extractCardholderName(text), name) << text;
}

}  // namespace
}  // namespace pravik
