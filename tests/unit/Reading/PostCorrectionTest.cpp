#include "Reading/PostCorrection.h"

#include <gmock/gmock.h>

#include <limits>

#include "Reading/CardHolder.h"
#include "Reading/TextToRecord.h"
#include "Utils/Text.h"
#include "support/CardPage.h"

namespace pravik {
namespace {

using test::page;
using enum SceneType;

/// A block with its left edge and its vertical centre from the top; characters are as wide as they are high on a card.
Observation at(double left, double top, const std::string& text, double width = 0.04) {
  constexpr double height = 0.06;
  return {text, 0.9F, {left, 1 - top - height / 2, width * static_cast<double>(characterCount(text)), height}};
}

std::vector<std::string> textsOf(const Observations& observations) {
  std::vector<std::string> texts;
  for (const Observation& block : observations) texts.push_back(block.text);
  return texts;
}

using Case = std::tuple<SceneType, std::string, std::string>;

TEST(PostCorrection, UndoesWhatAPhotographDoesToABlock) {
  for (const auto& [scene, read, corrected] : std::vector<Case>{
           // Spaces.
           {idCardFront, "林 晓 岚", "林晓岚"},
           {idCardFront, "公 民 身\u3000份 号 码 110101 1990", "公民身份号码 110101 1990"},
           {idCardFront, "性别 女 民族 汉", "性别女 民族汉"},
           {bankCard, "中 国 银 行 BANK OF CHINA", "中国银行 BANK OF CHINA"},
           // Forms.
           {idCardFront, "１８号－Ａ座（２）", "18号-A座(2)"},
           {idCardBack, "有效期限：２０１５．０３．０１", "有效期限:2015.03.01"},
           {bankCard, "６２２２\u3000０２！２", "6222 02！2"},
           {idCardFront, "陳強韻黃別", "陈强韵黄别"},
           {idCardFront, "乾著堃婳仫喆", "乾著堃婳仫喆"},
           {idCardBack, "签发机关凤台具公安局", "签发机关凤台县公安局"},
           // Dots.
           {idCardFront, "买买提．艾力", "买买提·艾力"},
           {idCardFront, "买买提 ・ 艾力", "买买提·艾力"},
           {idCardFront, "买买提•艾力", "买买提·艾力"},
           {idCardBack, "2015．03.01", "2015.03.01"},
           // Letters among digits.
           {idCardFront, "l1O1O11990O3O7123×", "11010119900307123X"},
           {idCardFront, "公民身份号码110101 19900307 123x", "公民身份号码110101 19900307 123X"},
           {idCardFront, "11010119900307123Ｘ", "11010119900307123X"},
           {idCardFront, "1101011990030712x", "1101011990030712x"},
           {idCardBack, "2O15.03.0l-2035.O3.01", "2015.03.01-2035.03.01"},
           {idCardFront, "Oak里I号1O2", "Oak里I号1O2"},
           {bankCard, "6222 0O12 3456 7B94", "6222 0012 3456 7B94"},
           {bankCard, "l6222 0212 3456 7894", "l6222 0212 3456 7894"},
           {bankCard, "Tel 4008895558", "Tel 4008895558"},
           // Digits in words of capitals.
           {bankCard, "0UYANG L1NG LEl", "OUYANG LING LEI"},
           {bankCard, "L1 IC01 ATM 01/30 OI0I 2HU", "L1 IC01 ATM 01/30 OI0I 2HU"},
           {bankCard, "6222 O1NO 0212", "6222 O1NO 0212"},
           {idCardFront, "ZHA0", "ZHA0"},
       }) {
    const Observations once = postCorrected({at(0.1, 0.5, read)}, scene);
    EXPECT_EQ(textsOf(once), std::vector{corrected});
    EXPECT_EQ(postCorrected(once, scene), once) << "nothing is left to undo";
  }
}

TEST(PostCorrection, MendsLabelsAndLeavesValuesAlone) {
  for (const auto& [scene, read, corrected] : std::vector<Case>{
           {idCardFront, "姓各", "姓名"},
           {idCardFront, "娃名林晓岚", "姓名林晓岚"},
           {idCardFront, "姓口", "姓名"},
           {idCardFront, "性刖女 氏族汉", "性别女民族汉"},
           {idCardFront, "性別", "性别"},
           {idCardFront, "岀生1990年3月7日", "出生1990年3月7日"},
           {idCardFront, "佳址", "住址"},
           {idCardFront, "公民身份号玛11010119900307123X", "公民身份号码11010119900307123X"},
           {idCardFront, "公民身分號碼", "公民身份号码"},
           {idCardFront, "公民身份号110101", "公民身份号码110101"},
           {idCardFront, "公民身份证号码", "公民身份号码"},
           {idCardBack, "簽發機關", "签发机关"},
           {idCardBack, "签友机关云浮市公安局", "签发机关云浮市公安局"},
           {idCardBack, "签发机夫云浮市公安局", "签发机关云浮市公安局"},
           {idCardBack, "发机关云浮市公安局", "签发机关云浮市公安局"},
           {idCardBack, "有效期长期", "有效期限长期"},
           {idCardBack, "中华人民共和囯", "中华人民共和国"},
           {idCard, "居民身份正", "居民身份证"},
           // Values.
           {idCardFront, "王生", "王生"},
           {idCardFront, "李名", "李名"},
           {idCardFront, "汉族", "汉族"},
           {idCardFront, "住宅", "住宅"},
           {idCardFront, "佳木斯市", "佳木斯市"},
           {idCardFront, "出云市", "出云市"},
           {idCardBack, "云浮市公安局", "云浮市公安局"},
           {idCardBack, "姓各", "姓各"},
           {bankCard, "有效期", "有效期"},
       })
    EXPECT_EQ(textsOf(postCorrected({at(0.1, 0.5, read)}, scene)), std::vector{corrected});
  EXPECT_EQ(textsOf(postCorrected(page({"住址 云浮市", "往址"}), idCardFront)),
            (std::vector<std::string>{"住址云浮市", "往址"}))
      << "the label is there already";
}

TEST(PostCorrection, MendsTheNameOfABankWhereOneAloneComesIntoQuestion) {
  for (const auto& [read, corrected] : std::vector<std::pair<std::string, std::string>>{
           {"中国工药银行", "中国工商银行"},
           {"农村商常银行", "农村商业银行"},
           {"ICBC 中國工商舉行", "ICBC 中国工商银行"},
           {"交局银行", "交通银行"},
           {"季夏银行", "华夏银行"},
           {"上海很行", "上海银行"},
           {"恆豐銀行", "恒丰银行"},
           // Of two banks, or of another.
           {"由京银行", "由京银行"},
           {"中园银行", "中园银行"},
           {"宁夏银行", "宁夏银行"},
           {"广州银行", "广州银行"},
           {"长安银行", "长安银行"},
           {"华侨银行", "华侨银行"},
           {"南昌银行", "南昌银行"},
           {"中国人民银行", "中国人民银行"},
           // No bank's name.
           {"中国银联", "中国银联"},
           {"中国发行", "中国发行"},
           {"发卡银行", "发卡银行"},
           {"交局银行信用卡", "交局银行信用卡"},
       })
    EXPECT_EQ(textsOf(postCorrected({at(0.1, 0.5, read)}, bankCard)), std::vector{corrected});
  EXPECT_EQ(textsOf(postCorrected(page({"招商银行", "交局银行"}), bankCard)),
            (std::vector<std::string>{"招商银行", "交局银行"}))
      << "a bank is named already";
  EXPECT_EQ(textsOf(postCorrected({at(0.1, 0.5, "交局银行")}, idCardFront)), std::vector<std::string>{"交局银行"});
}

TEST(CardHolder, IsSpeltInPinyinWhereOneLetterAloneCanBeWrong) {
  for (const auto& [read, mended] : std::vector<std::pair<std::string, std::string>>{
           {"CAO XIA XTANG", "CAO XIA XIANG"},
           {"LTU SIDAN", "LIU SIDAN"},
           {"LYU XTN", "LYU XIN"},
           {"PAN SHENGOONG", "PAN SHENGDONG"},
           {"LI GANG HAD", "LI GANG HAO"},
           {"ZHANG DAD", "ZHANG DAO"},
           // Pinyin both ways, or not by one letter.
           {"LIU HEI", "LIU HEI"},
           {"GAS STDAN", "GAS STDAN"},
           {"LI XTADNG", "LI XTADNG"},
           // Other spellings.
           {"HO KA WAI", "HO KA WAI"},
           {"WONG KAI", "WONG KAI"},
           {"CHAN TAT MING", "CHAN TAT MING"},
           {"ADA WANG", "ADA WANG"},
           {"TSE NA", "TSE NA"},
           {"JOAN LI", "JOAN LI"},
       })
    EXPECT_EQ(mendedHolder(read), mended) << read;
  const auto card = recordIn(page({"6222 0212 3456 7894", "LTU WEI"}), OCRScanMode::bankCard);
  EXPECT_EQ(std::get<BankCardInfo>(card.value()).cardholderName, "LIU WEI");
}

TEST(CardHolder, IsNoPieceOfWhatStandsBesideIt) {
  for (const std::string_view piece : {"TH RU", "ALID TH RU", "VALIO T", "BER SI NCE", "EMBER SINC", "MONTH YEAR"})
    EXPECT_TRUE(isPrintedPhrase(piece)) << piece;
  for (const std::string_view name : {"LI DA", "HU RUI", "SI NIE", "LI DAN", "YE LIANG", "MO MEI", "OU", "TONG YE AN"})
    EXPECT_FALSE(isPrintedPhrase(name)) << name;
  const auto card = recordIn(page({"6222 0212 3456 7894", "ALID TH RU"}), OCRScanMode::bankCard);
  EXPECT_FALSE(std::get<BankCardInfo>(card.value()).cardholderName);
}

TEST(CardHolder, StandsInChineseBehindItsLabel) {
  const auto holder = [](const Observations& blocks, TextHandling handling = TextHandling::corrected) {
    Observations all = page({"6222 0212 3456 7894"});
    all.insert(all.end(), blocks.begin(), blocks.end());
    return std::get<BankCardInfo>(recordIn(all, OCRScanMode::bankCard, handling).value()).cardholderName.value_or("");
  };
  const Observation label = at(0.1, 0.8, "姓名");
  for (const auto& [name, blocks] : std::vector<std::pair<std::string, Observations>>{
           {"林晓岚", {label, at(0.3, 0.8, "林 晓 岚")}},
           {"欧阳晓岚", {at(0.1, 0.8, "持卡人姓名：欧阳晓岚")}},
           {"王生", {at(0.1, 0.8, "持卡人 王生"), at(0.6, 0.8, "银联")}},
           {"ZHANG SAN", {at(0.1, 0.8, "姓名 林晓岚"), at(0.1, 0.9, "ZHANG SAN")}},
           {"", {label, at(0.3, 0.9, "林晓岚")}},
           {"", {at(0.1, 0.8, "持卡人签名"), at(0.1, 0.9, "姓名拼音")}},
           {"", {at(0.1, 0.8, "持卡人"), at(0.6, 0.8, "白金卡")}},
           {"", {at(0.1, 0.8, "白金卡")}},
       })
    EXPECT_EQ(holder(blocks), name);
  EXPECT_EQ(holder({at(0.1, 0.8, "姓名：林晓岚")}, TextHandling::literal), "");
}

TEST(PostCorrection, PutsAValueOnTheLineOfItsLabel) {
  using Texts = std::vector<std::string>;
  const Observation validity = at(0.24, 0.88, "有效期限2015.03.01-2035.03.01");
  const Observation office = at(0.24, 0.74, "签发机关");
  for (const auto& [name, scene, blocks, expected] :
       std::vector<std::tuple<std::string, SceneType, Observations, Texts>>{
           {"beside the first line",
            idCardBack,
            {office, at(0.42, 0.74, "云浮自治州新平县"), at(0.42, 0.81, "公安局"), validity},
            {"签发机关", "云浮自治州新平县公安局", validity.text}},
           {"in one block with the first line",
            idCardBack,
            {at(0.24, 0.74, "签发机关云浮自治州新平县"), at(0.41, 0.81, "公安局"), validity},
            {"签发机关云浮自治州新平县公安局", validity.text}},
           {"between the lines",
            idCardBack,
            {at(0.42, 0.705, "云浮自治州新平县"), office, at(0.42, 0.775, "公安局"), validity},
            {"云浮自治州新平县公安局", "签发机关", validity.text}},
           {"above the lines",
            idCardBack,
            {at(0.24, 0.68, "签发机关"), at(0.24, 0.75, "云浮自治州新平县"), at(0.24, 0.82, "公安局"), validity},
            {"签发机关", "云浮自治州新平县公安局", validity.text}},
           {"a line that ends no office",
            idCardBack,
            {office, at(0.42, 0.74, "云浮市公安局"), at(0.42, 0.81, "山水"), validity},
            {"签发机关", "云浮市公安局", "山水", validity.text}},
           {"one line below the title",
            idCardBack,
            {at(0.3, 0.66, "居民身份证"), office, at(0.42, 0.74, "云浮市公安局"), validity},
            {"居民身份证", "签发机关", "云浮市公安局", validity.text}},
           {"an address in pieces",
            idCardFront,
            {at(0.06, 0.52, "住址"), at(0.17, 0.5, "云浮市"), at(0.31, 0.505, "新平区"), at(0.17, 0.58, "民族路18号"),
             at(0.17, 0.66, "302"), at(0.06, 0.88, "公民身份号码"), at(0.32, 0.88, "11010119900307123X")},
            {"住址", "云浮市新平区民族路18号302", "公民身份号码", "11010119900307123X"}},
           {"an address beside its label, and what stands elsewhere",
            idCardFront,
            {at(0.06, 0.5, "住址云浮市新平区"), at(0.16, 0.58, "望江路18号"), at(0.7, 0.66, "花样"),
             at(0.06, 0.88, "11010119900307123X")},
            {"住址云浮市新平区望江路18号", "花样", "11010119900307123X"}},
       }) {
    const Observations joined = postCorrected(blocks, scene);
    EXPECT_EQ(textsOf(joined), expected) << name;
    EXPECT_EQ(postCorrected(joined, scene), joined) << name;
    for (const Observation& block : joined) {
      if (block.text == "云浮自治州新平县公安局") {
        const auto record = recordIn(blocks, OCRScanMode::idCardBack);
        EXPECT_EQ(std::get<IDCardBackInfo>(record.value()).issuingAuthority, block.text) << name;
      }
    }
  }
}

TEST(PostCorrection, IsUnsureOfAnAddressWithALineThatIsCut) {
  const auto confidence = [](std::string_view first, std::string_view second) {
    const Observations joined = postCorrected(
        {at(0.06, 0.5, "住址"), at(0.17, 0.5, std::string(first)), at(0.17, 0.58, std::string(second))}, idCardFront);
    return joined.back().confidence;
  };
  EXPECT_LT(confidence("北京市东城区红", "明珠21号楼1704室"), 0.5) << "light hides the end of the first line";
  EXPECT_GT(confidence("北京市东城区红旗路东", "18号"), 0.5);
  EXPECT_GT(confidence("北京市东城区红旗12号", "1704室"), 0.5) << "digits are narrow";
}

TEST(PostCorrection, JoinsWordsThatStandBesideEachOther) {
  const auto word = [](const std::string& text, double left, double top, double width, double height = 0.05) {
    return Observation{text, 0.9F, {left, 1 - top, width, height}};
  };
  using Texts = std::vector<std::string>;
  for (const auto& [blocks, expected] : std::vector<std::pair<Observations, Texts>>{
           {{word("ZHANG", 0.1, 0.8, 0.15), word("SAN", 0.28, 0.803, 0.1), word("FENG", 0.41, 0.806, 0.12)},
            {"ZHANG SAN FENG"}},
           {{word("SAN", 0.28, 0.797, 0.1), word("ZHANG", 0.1, 0.8, 0.15)}, {"ZHANG SAN"}},
           {{word("6205 8525", 0.1, 0.8, 0.27), word("1", 0.38, 0.8, 0.01, 0.1), word("19225597", 0.39, 0.8, 0.24)},
            {"6205 8525 19225597", "1"}},
           {{word("ZHANG", 0.1, 0.8, 0.15), word("UnionPay", 0.35, 0.8, 0.2)}, {"ZHANG", "UnionPay"}},
           {{word("ZHANG", 0.1, 0.8, 0.15), word("SAN", 0.28, 0.83, 0.1)}, {"ZHANG", "SAN"}},
           {{word("ZHANG", 0.1, 0.8, 0.15), word("SAN", 0.28, 0.8, 0.1, 0.075)}, {"ZHANG", "SAN"}},
           {{word("1990", 0.1, 0.8, 0.15), word("年", 0.26, 0.8, 0.05)}, {"1990", "年"}},
       }) {
    EXPECT_EQ(textsOf(postCorrected(blocks, bankCard)), expected);
  }
}

TEST(PostCorrection, EmptiesFieldsThatAreALabel) {
  const auto remaining = [](const std::string& name, const std::string& address) {
    IDCardFrontInfo info;
    info.name = name;
    info.address = address;
    info = std::get<IDCardFrontInfo>(withoutLabels(info));
    return info.name + "/" + info.address;
  };
  EXPECT_EQ(remaining("出生", "公民身份号码"), "/");
  EXPECT_EQ(remaining("王生", "民族路18号"), "王生/民族路18号");
  const auto office = [](const Observations& blocks) {
    const auto record = recordIn(blocks, OCRScanMode::idCardBack);
    return record ? std::get<IDCardBackInfo>(*record).issuingAuthority : "no record";
  };
  EXPECT_EQ(office(page({"签发机关", "有效期限 2015.03.01-2035.03.01"})), "");
  EXPECT_EQ(office(page({"签发机关", "有效期限"})), "no record");
}

TEST(PostCorrection, IsLeftOutWhereTheTextIsTakenToTheLetter) {
  const Observations blocks = page({"姓各 林 晓 岚", "公民身份号码 l1010119900307123X"});
  EXPECT_EQ(std::get<IDCardFrontInfo>(recordIn(blocks, OCRScanMode::idCardFront).value()).name, "林晓岚");
  EXPECT_EQ(recordIn(blocks, OCRScanMode::idCardFront, TextHandling::literal), std::nullopt);
}

TEST(PostCorrection, SurvivesHostileReadings) {
  for (const std::string& text : test::hostileTexts())
    for (const SceneType scene : {idCard, bankCard}) postCorrected(page({text, "住址", text, "签发机关"}), scene);
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  Observations odd = page({"签发机关", "云浮市", "公安局", "住址", "ZHANG", "SAN"});
  odd[0].boundingBox = {nan, nan, nan, nan};
  odd[1].boundingBox = {0, 0, 0, 0};
  odd[2].confidence = std::numeric_limits<float>::quiet_NaN();
  odd[4].boundingBox = {0, 0, 0, 0};
  EXPECT_EQ(postCorrected(odd, idCard).size(), odd.size());
}

}  // namespace
}  // namespace pravik
