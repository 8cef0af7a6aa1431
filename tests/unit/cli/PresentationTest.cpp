#include <gtest/gtest.h>

#include "apps/pravik/Annotation.h"
#include "apps/pravik/Csv.h"
#include "apps/pravik/Table.h"

namespace pravik::cli {
namespace {

TEST(Table, WidthsAreThoseOfATerminal) {
  const std::vector<std::pair<std::string, int>> cases{{"", 0},        {"abc", 3}, {"张三", 4}, {"Ａ：", 4}, {"é", 1},
                                                       {"e\u0301", 1}, {"·", 1},   {"ab张", 4}, {"\xFF", 1}};
  for (const auto& [text, width] : cases) EXPECT_EQ(displayWidth(text), width) << text;
  EXPECT_EQ(padded("张", 4) + "|", "张  |");
  EXPECT_EQ(padded("张三丰", 4), "张三丰");
}

TEST(Table, TellsAnAnswerInAlignedWords) {
  const std::vector<std::pair<Answer, std::string>> cases{
      {{{"file", "a.jpg"},
        {"result", {{"gender", "男"}, {"idNumber", "110"}, {"endDate", nullptr}, {"isLongTerm", true}}},
        {"checks", {{"checkDigit", false}, {"genderMatches", false}, {"birthDateMatches", true}}}},
       "a.jpg\n"
       "  gender      男   ! differs from the identity number\n"
       "  idNumber    110  ! the check character is wrong\n"
       "  endDate     -\n"
       "  isLongTerm  yes\n"},
      {{{"result", {{"cardNumber", "1"}}}, {"checks", {{"luhn", false}}}},
       "  cardNumber  1  ! the check digit is wrong\n"},
      {answerOf(OCRError::invalidImage(), "no such file"),
       "  error   无效的图像，请提供有效的 UIImage\n"
       "  reason  no such file\n"},
      // Control characters do not reach the terminal.
      {{{"result", {{"payload", "a\033[2Jb\nc\u009b"}}}},
       "  payload  a\uFFFD[2Jb\n"
       "           c\uFFFD\n"},
  };
  for (const auto& [answer, table] : cases) EXPECT_EQ(asTable(answer), table);
}

TEST(Csv, ARowHasTheColumnsOfItsKindWhateverTheAnswer) {
  const DocumentKind* code = &documentKind(OCRScanMode::qrCode);
  EXPECT_EQ(csvHeader(code), "file,page,kind,payload,symbology,error,message,reason,warnings\r\n");
  EXPECT_EQ(csvHeader(&documentKind(OCRScanMode::bankCard)),
            "file,page,kind,cardNumber,rawCardNumber,bankName,cardType,cardholderName,luhn,error,message,reason,"
            "warnings\r\n");
  EXPECT_EQ(csvHeader(nullptr), "file,page,kind,text,error,message,reason,warnings\r\n");

  const auto ofPayload = [](const std::string& payload) -> Answer {
    return {{"file", "a.jpg"}, {"kind", "code"}, {"result", {{"payload", payload}, {"symbology", "QR Code"}}}};
  };
  const std::pair<Answer, std::string> rows[] = {
      {ofPayload("1"), "a.jpg,,code,1,QR Code,,,,"},
      {ofPayload("a, \"b\"\nc"), "a.jpg,,code,\"a, \"\"b\"\"\nc\",QR Code,,,,"},
      // What a spreadsheet would run.
      {ofPayload("=HYPERLINK(\"x\")"), "a.jpg,,code,\"'=HYPERLINK(\"\"x\"\")\",QR Code,,,,"},
      {ofPayload("+86 10"), "a.jpg,,code,'+86 10,QR Code,,,,"},
      {ofPayload("-"), "a.jpg,,code,-,QR Code,,,,"},
      {ofPayload("\xFF"), "a.jpg,,code,\uFFFD,QR Code,,,,"},
      {{{"file", "a,b.pdf"},
        {"page", 3},
        {"kind", "code"},
        {"error", {{"code", "insufficient_text"}, {"message", "m"}, {"context", {{"error_code", "x"}}}}},
        {"report", {{"reason", "no_code_found"}, {"text", "r"}}}},
       "\"a,b.pdf\",3,code,,,insufficient_text,m,r,"},
      {{{"file", "a"}, {"kind", "code"}, {"result", {{"payload", nullptr}}}, {"warnings", {"one", "two"}}},
       "a,,code,,,,,,\"one\ntwo\""},
  };
  for (const auto& [answer, row] : rows) EXPECT_EQ(csvRow(code, answer), row + "\r\n");
}

TEST(Annotation, ABlockBelongsToTheFieldThatItFed) {
  const Json result = recordAnswer(IDCardFrontInfo{"汉武", "男", "汉", "1990年03月07日", "1990", "03", "07",
                                                   "湖北省武汉市江岸区解放路12号", "11010119900307123X"})["result"];
  const std::vector<std::pair<std::string, std::string>> cases{{"姓名 汉武", "name"},
                                                               {"性别 男", "gender"},
                                                               {"民族 汉", "ethnicity"},
                                                               {"出生 1990 年 3 月 7 日", "birthDate"},
                                                               {"住址 湖北省武汉市江", "address"},
                                                               {"岸区解放路12号", "address"},
                                                               {"公民身份号码 110101 19900307 123X", "idNumber"},
                                                               {"公民身份号码", ""},
                                                               {"路人甲", ""},
                                                               {"", ""}};
  for (const auto& [block, field] : cases) EXPECT_EQ(fieldFedBy(block, result), field) << block;
  EXPECT_EQ(
      fieldFedBy("有效期限 2015.03.01-2035.03.01", {{"validityPeriod", "20150301-20350301"}, {"endDate", "20350301"}}),
      "validityPeriod");
}

TEST(Annotation, BoxesAreDrawnWhereTheyAreAndTheLegendStandsBelow) {
  auto pixels = allocatePixels(PixelFormat::grey8, 200, 100);
  const ReadPicture picture{Bitmap(PixelFormat::grey8, 200, 100, 200, pixels),
                            {{"6901234567892", {0.25, 0.5, 0.5, 0.25}}}};
  const Bitmap drawn = annotatedPicture(picture, {{"result", {{"payload", "6901234567892"}}}});
  EXPECT_EQ(drawn.width(), 200);
  EXPECT_GT(drawn.height(), 100);
  const auto isColoured = [&](int x, int y) { return drawn.row(y)[4 * x + 2] > 150; };
  EXPECT_TRUE(isColoured(100, 25)) << "the upper edge";
  EXPECT_TRUE(isColoured(50, 40)) << "the left edge";
  EXPECT_FALSE(isColoured(100, 40)) << "inside";
  EXPECT_FALSE(isColoured(100, 70)) << "below";
}

}  // namespace
}  // namespace pravik::cli
