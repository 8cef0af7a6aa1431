#include "Reading/CardReport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Platform/Projection.h"
#include "Pravik.h"
#include "Reading/FieldSources.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

using test::textBlock;

const IDCardFrontInfo soundFront{
    "张三", "女", "汉", "1990年03月07日", "1990", "03", "07", "湖北省武汉市江岸区解放路12号", "110101199003071233"};

TEST(Doubt, FallsOnWhatAFieldNeverSays) {
  const auto front = [](std::string IDCardFrontInfo::* field, const std::string& value) {
    IDCardFrontInfo info = soundFront;
    info.*field = value;
    return info;
  };
  const auto back = [](const std::string& office, const std::string& start, const std::optional<std::string>& end) {
    return IDCardBackInfo{office, start + "-" + end.value_or("长期"), start, end, !end};
  };
  const struct {
    Record record;
    std::string field;
    bool isDoubtful;
  } cases[] = {
      {soundFront, "name", false},
      {front(&IDCardFrontInfo::name, "迪丽·买买提"), "name", false},
      {front(&IDCardFrontInfo::name, "张3"), "name", true},
      {front(&IDCardFrontInfo::name, ""), "name", true},
      {soundFront, "ethnicity", false},
      {front(&IDCardFrontInfo::ethnicity, "汊"), "ethnicity", true},
      {soundFront, "address", false},
      {front(&IDCardFrontInfo::address, "湖北省武汉市公民身份号码"), "address", true},
      {front(&IDCardFrontInfo::address, "湖北省武汉市民族路公民巷3号"), "address", false},
      {front(&IDCardFrontInfo::address, "武汉市"), "address", true},
      {back("某市公安局", "20100617", "20300617"), "validityPeriod", false},
      {back("某市公安局", "20100617", "20300618"), "validityPeriod", true},
      {back("某市公安局", "20100617", "20310617"), "validityPeriod", true},
      {back("某市公安局", "20120229", "20220228"), "validityPeriod", false},
      {back("某市公安局", "20120229", std::nullopt), "validityPeriod", false},
      {back("某市公安局北山分局", "20100617", "20300617"), "issuingAuthority", false},
      {back("有效期限", "20100617", "20300617"), "issuingAuthority", true},
      {BankCardInfo{"6222 0212 3456 7894", "6222021234567894", {}, {}, "LI 3"}, "cardholderName", true},
      {BankCardInfo{"6222 0212 3456 7894", "6222021234567894", {}, {}, {}}, "cardholderName", false},
  };
  for (const auto& [record, field, expected] : cases)
    EXPECT_EQ(isDoubtful(record, field), expected)
        << field << " of case " << (&record - &cases[0].record) / (&cases[1].record - &cases[0].record);
}

TEST(FieldSources, AreTheTightestBlockElseThePieces) {
  const Observations blocks{
      {"姓名张三", 1, {}}, {"住址湖北省武汉市", 1, {}}, {"解放路12号", 1, {}}, {"张三丰收", 1, {}}};
  const auto textsOf = [&](const std::string& value) {
    std::vector<std::string> texts;
    for (const Observation& block : sourcesOf(value, blocks)) texts.push_back(block.text);
    return texts;
  };
  EXPECT_EQ(textsOf("张三"), std::vector<std::string>{"姓名张三"});
  EXPECT_EQ(textsOf("湖北省武汉市解放路12号"), (std::vector<std::string>{"住址湖北省武汉市", "解放路12号"}));
  EXPECT_TRUE(textsOf("上海").empty());
  EXPECT_TRUE(textsOf("").empty());
}

TEST(Projection, PutsCornersOnCornersAndIsJoinedInOrder) {
  const Quadrilateral corners{{10, 20}, {110, 40}, {0, 90}, {130, 120}};
  const Projection onto = Projection::onto(corners, {200, 100});
  const auto expectNear = [](const Point& point, const Point& expected) {
    EXPECT_NEAR(point.x, expected.x, 1e-9);
    EXPECT_NEAR(point.y, expected.y, 1e-9);
  };
  expectNear(onto(Point{0, 0}), corners.topLeft);
  expectNear(onto(Point{200, 0}), corners.topRight);
  expectNear(onto(Point{0, 100}), corners.bottomLeft);
  expectNear(onto(Point{200, 100}), corners.bottomRight);
  // Straight lines stay straight: the diagonals meet where those of the four corners do.
  expectNear(onto(Point{100, 50}), Projection::onto(corners, {2, 1})(Point{1, 0.5}));
  // A part of the rectangle.
  const Projection part = onto * Projection::onto(cornersOf({50, 0, 100, 100}), {10, 10});
  expectNear(part(Point{5, 10}), onto(Point{100, 100}));
  EXPECT_EQ(renamed(corners, 90).topLeft, corners.bottomLeft);
  EXPECT_EQ(renamed(corners, 270).topLeft, corners.topRight);
}

struct ReportFixture : test::FakeParts {
  PravikSDK sdk{makePlatform()};

  ReadingReport report(OCRScanMode mode, const std::vector<RecognizedText>& blocks, ReadingLimits limits = {}) {
    engine->blocks = blocks;
    return syncWait(sdk.read({.bitmap = test::plainPicture(400, 300, 200, 200, 200)}, mode, std::move(limits)))
        .value()
        .report;
  }
};

bool warnsOf(const ReadingReport& report, ReadingWarning warning) {
  return std::ranges::find(report.warnings, warning) != report.warnings.end();
}

TEST(CardReport, TellsWhereAFieldStandsAndHowSureItIs) {
  ReportFixture f;
  const ReadingReport report =
      f.report(OCRScanMode::bankCard, {textBlock("6222 0212 3456 7890", 0.5, 0.5), textBlock("工商银行", 0.2, 0.2)});
  ASSERT_EQ(report.fields.size(), documentKind(OCRScanMode::bankCard).fields.size());
  EXPECT_EQ(report.fields[0].name, "cardNumber");
  ASSERT_TRUE(report.fields[0].corners);
  EXPECT_NEAR(middleOf(*report.fields[0].corners).x, 200, 1);
  EXPECT_NEAR(middleOf(*report.fields[0].corners).y, 150, 1);
  EXPECT_LT(report.fields[0].confidence, 0.5) << "its check digit is wrong";
  EXPECT_TRUE(warnsOf(report, ReadingWarning::checkFailed));
  EXPECT_EQ(report.fields[4].confidence, 0) << "no holder";
}

TEST(CardReport, DoubtsWhatWasTakenFromAnotherField) {
  ReportFixture f;
  const ReadingReport report =
      f.report(OCRScanMode::idCardFront, {textBlock("姓名 张三", 0.3, 0.2), textBlock("性别 女", 0.3, 0.3),
                                          textBlock("住址 陕西省渭水市雁塔区创新大道74号", 0.3, 0.5),
                                          textBlock("公民身份号码 11010119900307123X", 0.5, 0.9)});
  const auto doubtful = [&](std::string_view name) {
    return std::ranges::find(report.fields, name, &FieldReport::name)->isDoubtful;
  };
  EXPECT_FALSE(doubtful("name"));
  EXPECT_TRUE(doubtful("ethnicity")) << "that of the Shui stands in the address";
  EXPECT_FALSE(doubtful("gender"));
  EXPECT_FALSE(doubtful("address"));
}

TEST(CardReport, DoubtsANameMadeOfTheLabelOfTheNumber) {
  ReportFixture f;
  for (const auto& [name, isDoubtful] : {std::pair{"公线身空号码", true}, {"民身份号", true}, {"张身", false}}) {
    const auto fields = f.report(OCRScanMode::idCardFront, {textBlock(std::string("姓名 ") + name, 0.3, 0.2),
                                                            textBlock("公民身份号码 11010119900307123X", 0.5, 0.9)})
                            .fields;
    EXPECT_EQ(fields[0].text, name);
    EXPECT_EQ(fields[0].isDoubtful, isDoubtful) << name;
  }
}

TEST(CardReport, DoubtsNamesThatAreNoPinyinUnlessTheyAreClear) {
  ReportFixture f;
  for (const auto& [name, confidence, isDoubtful] : {std::tuple{"LI YENG", 0.95F, true},
                                                     {"LI YENG", 0.995F, true},
                                                     {"LI YENG", 0.9995F, false},
                                                     {"LI YONG", 0.95F, false}}) {
    RecognizedText block = textBlock(name, 0.2, 0.8);
    block.topCandidate->confidence = confidence;
    const auto fields = f.report(OCRScanMode::bankCard, {textBlock("6222 0212 3456 7894", 0.5, 0.5), block}).fields;
    EXPECT_EQ(fields[4].text, name);
    EXPECT_EQ(fields[4].isDoubtful, isDoubtful) << name << ' ' << confidence;
  }
}

TEST(CardReport, JudgesTheValidityByTheDay) {
  using namespace std::chrono_literals;
  ReportFixture f;
  const auto on = [&](std::chrono::year_month_day day) {
    return f.report(OCRScanMode::idCardBack,
                    {textBlock("签发机关 某市公安局", 0.5, 0.7), textBlock("有效期限 2015.03.01-2025.03.01", 0.5, 0.8)},
                    {.date = day});
  };
  EXPECT_TRUE(warnsOf(on(2015y / 2 / 28), ReadingWarning::notYetValid));
  for (const auto day : {2015y / 3 / 1, 2025y / 3 / 1}) {
    EXPECT_FALSE(warnsOf(on(day), ReadingWarning::notYetValid));
    EXPECT_FALSE(warnsOf(on(day), ReadingWarning::expired));
  }
  EXPECT_TRUE(warnsOf(on(2025y / 3 / 2), ReadingWarning::expired));
}

}  // namespace
}  // namespace pravik
