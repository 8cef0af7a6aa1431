#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "Reading/RecordChecks.h"
#include "Utils/Text.h"
#include "apps/pravik/Annotation.h"
#include "apps/pravik/Csv.h"
#include "apps/pravik/Table.h"
#include "support/Pictures.h"

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
      // Control characters do not reach the terminal.
      {{{"result", {{"payload", "a\033[2Jb\nc\u009b"}}}},
       "  payload  a\uFFFD[2Jb\n"
       "           c\uFFFD\n"},
  };
  for (const auto& [answer, table] : cases) EXPECT_EQ(asTable(answer, Language::english), table);
}

TEST(Table, HasOneLanguageAtATime) {
  const auto unread = [](const OCRError& error, UnreadReason reason) {
    return readingAnswer({.record = tl::unexpected(error), .report = {.unreadReason = reason, .stage = {}}});
  };
  const struct {
    Answer answer;
    std::string chinese, english;
  } cases[] = {
      {answerOf(OCRError::invalidImage(), "no such file"), "  error   无法读取图片\n  reason  没有这个文件\n",
       "  error   there is no picture that can be read\n  reason  no such file\n"},
      {answerOf(OCRError::invalidImage(), "too large: 20000 x 9000 pixels, at most 100 megapixels"),
       "  error   无法读取图片\n  reason  太大：20000 x 9000 像素，最多 10000 万像素\n",
       "  error   there is no picture that can be read\n"
       "  reason  too large: 20000 x 9000 pixels, at most 100 megapixels\n"},
      // A picture without a code lacks no text.
      {unread(OCRError::insufficientText(), UnreadReason::noCodeFound), "  error  没有找到二维码或条形码\n",
       "  error  no QR code or bar code was found\n"},
      {unread(OCRError::sceneMismatch("身份证背面", "银行卡"), UnreadReason::wrongDocument),
       "  error   场景不匹配：期望身份证背面，检测到银行卡\n  reason  图片中是另一种证件，请选择正确的类型\n",
       "  error   another document was expected: Identity card, emblem side; found: Bank card\n"
       "  reason  the picture shows another kind of document: choose that\n"},
      {unread(OCRError::recognitionFailed("x.onnx: no such file"), UnreadReason::engineFailed),
       "  error   文字识别失败\n  reason  x.onnx: 没有这个文件\n",
       "  error   the recognition failed\n  reason  x.onnx: no such file\n"},
      {invalidInputAnswer("line 1 is no JSON"), "  error  line 1 is no JSON\n", "  error  line 1 is no JSON\n"},
      {{{"result", {{"cardNumber", "1"}, {"isLongTerm", false}}}, {"checks", {{"luhn", false}}}},
       "  cardNumber  1  ! 校验位错误\n  isLongTerm  否\n",
       "  cardNumber  1  ! the check digit is wrong\n  isLongTerm  no\n"},
  };
  for (const auto& [answer, chinese, english] : cases) {
    EXPECT_EQ(asTable(answer, Language::chinese), chinese);
    EXPECT_EQ(asTable(answer, Language::english), english);
  }
}

/// Sentences of any error, reason, warning and check: Chinese with Chinese characters, English without any.
TEST(Wording, EveryCodeHasATextInBothLanguages) {
  std::vector<std::function<std::string(Language)>> texts;
  const auto add = [&](const Answer& answer) {
    texts.emplace_back([answer](Language language) { return errorText(answer, language); });
  };
  for (const OCRError& error :
       {OCRError::recognitionFailed("x.onnx"), OCRError::parseFailure("x"), OCRError::sceneMismatch("身份证", "银行卡"),
        OCRError::invalidImage(), OCRError::insufficientText(), OCRError::cameraPermissionDenied(),
        OCRError::photoLibraryPermissionDenied(), OCRError::cancelled()})
    add(answerOf(error));
  for (int i = 0; i <= static_cast<int>(UnreadReason::engineFailed); ++i)
    add(readingAnswer(
        {tl::unexpected(OCRError::insufficientText()), {.unreadReason = static_cast<UnreadReason>(i), .stage = {}}}));
  for (int i = 0; i <= static_cast<int>(ReadingWarning::checkFailed); ++i)
    texts.emplace_back(
        [code = codeOf(static_cast<ReadingWarning>(i))](Language language) { return warningText(code, language); });
  for (const Record& record : {Record(IDCardFrontInfo{}), Record(IDCardBackInfo{}), Record(BankCardInfo{})})
    for (const RecordCheck& check : checksOf(record))
      texts.emplace_back([name = check.kind.name](Language language) { return checkText(name, language); });
  for (const auto& text : texts) {
    const std::string chinese = text(Language::chinese), english = text(Language::english);
    EXPECT_TRUE(std::ranges::any_of(codePoints(chinese), isIdeograph)) << chinese << english;
    EXPECT_FALSE(english.empty() || std::ranges::any_of(codePoints(english), isIdeograph)) << chinese << english;
  }
}

TEST(Language, IsThatOfTheEnvironmentUnlessItIsNamed) {
  const struct {
    const char *all, *messages, *lang;
    Language expected;
  } cases[] = {
      {"", "", "", Language::english},
      {"", "", "zh_CN.UTF-8", Language::chinese},
      {"", "en_GB.UTF-8", "zh_CN.UTF-8", Language::english},
      {"zh_TW", "en_GB.UTF-8", "C", Language::chinese},
      {"C.UTF-8", "zh_CN", "zh_CN", Language::english},
  };
  for (const auto& [all, messages, lang, expected] : cases) {
    ::setenv("LC_ALL", all, 1);
    ::setenv("LC_MESSAGES", messages, 1);
    ::setenv("LANG", lang, 1);
    EXPECT_EQ(environmentLanguage(), expected) << all << messages << lang;
  }
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) ::unsetenv(name);
}

TEST(Csv, ARowHasTheColumnsOfItsKindWhateverTheAnswer) {
  const DocumentKind* code = &documentKind(OCRScanMode::qrCode);
  EXPECT_EQ(csvHeader(code), "file,page,kind,payload,symbology,error,message,reason,doubtful,warnings,problems\r\n");
  EXPECT_EQ(csvHeader(&documentKind(OCRScanMode::bankCard)),
            "file,page,kind,cardNumber,rawCardNumber,bankName,cardType,cardholderName,luhn,error,message,reason,"
            "doubtful,warnings,problems\r\n");
  EXPECT_EQ(csvHeader(nullptr), "file,page,kind,text,error,message,reason,doubtful,warnings,problems\r\n");

  const auto ofPayload = [](const std::string& payload) -> Answer {
    return {{"file", "a.jpg"}, {"kind", "code"}, {"result", {{"payload", payload}, {"symbology", "QR Code"}}}};
  };
  const std::pair<Answer, std::string> rows[] = {
      {ofPayload("1"), "a.jpg,,code,1,QR Code,,,,,,"},
      {ofPayload("a, \"b\"\nc"), "a.jpg,,code,\"a, \"\"b\"\"\nc\",QR Code,,,,,,"},
      // What a spreadsheet would run.
      {ofPayload("=HYPERLINK(\"x\")"), "a.jpg,,code,\"'=HYPERLINK(\"\"x\"\")\",QR Code,,,,,,"},
      {ofPayload("+86 10"), "a.jpg,,code,'+86 10,QR Code,,,,,,"},
      {ofPayload("-"), "a.jpg,,code,-,QR Code,,,,,,"},
      {ofPayload("\xFF"), "a.jpg,,code,\uFFFD,QR Code,,,,,,"},
      {{{"file", "a,b.pdf"},
        {"page", 3},
        {"kind", "code"},
        {"error", {{"code", "insufficient_text"}, {"message", "m"}, {"context", {{"error_code", "x"}}}}},
        {"report", {{"reason", "no_code_found"}, {"text", "r"}}}},
       "\"a,b.pdf\",3,code,,,insufficient_text,m,r,,,"},
      {{{"file", "a"}, {"kind", "code"}, {"result", {{"payload", nullptr}}}, {"warnings", {"one", "two"}}},
       "a,,code,,,,,,,\"one\ntwo\","},
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

TEST(Annotation, EachCardHasItsOutlineAndItsFields) {
  const auto corners = [](int left, int top, int right, int bottom) {
    return Json{{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  };
  const Json fields{{"name", {{"corners", corners(60, 110, 90, 130)}}}, {"address", {{"corners", nullptr}}}};
  const Answer answer{{"cards",
                       {{{"kind", "id-front"}, {"corners", corners(40, 80, 200, 180)}, {"fields", fields}},
                        {{"kind", nullptr}, {"corners", corners(220, -20, 380, 180)}}}}};
  const Bitmap drawn = annotatedCards(test::plainPicture(400, 200, 20, 20, 20), answer);
  const auto isColoured = [&](int x, int y) {
    const std::uint8_t* pixel = drawn.row(y) + std::ptrdiff_t{4} * x;
    return std::max({pixel[0], pixel[1], pixel[2]}) > 100;
  };
  for (const auto& [x, y] : {std::pair{40, 150}, {60, 120}, {220, 100}}) EXPECT_TRUE(isColoured(x, y)) << x << ' ' << y;
  for (const auto& [x, y] : {std::pair{75, 120}, {120, 150}, {10, 190}})
    EXPECT_FALSE(isColoured(x, y)) << x << ' ' << y;
}

}  // namespace
}  // namespace pravik::cli
