#include <gtest/gtest.h>

#include "Reading/SceneValidation.h"
#include "Records/OCRError.h"

namespace pravik {
namespace {

/// The error that validating this text gives; absent when it is accepted.
std::optional<OCRError> validate(const std::string& text, SceneType expected) {
  try {
    validateScene({{text, 1, Rect{0.1, 0.1, 0.5, 0.1}}}, expected);
  } catch (const OCRError& error) {
    return error;
  }
  return std::nullopt;
}

TEST(SceneValidation, RefusesOnlyWhatClearlyIsAnotherDocument) {
  const std::string front = "姓名 张三 性别 男";
  const std::string numberedFront = "姓名 110101 19900307 123X";
  const std::string back = "有效期限";
  const std::string rangedBack = "中华人民共和国 20150301-20350301";
  const std::string bank = "招商银行";
  const auto mismatch = [](const char* expected, const char* detected) {
    return std::optional(OCRError::sceneMismatch(expected, detected));
  };
  const std::vector<std::tuple<const char*, std::string, SceneType, std::optional<OCRError>>> cases{
      {"no features", "hello", SceneType::bankCard, std::nullopt},
      {"front as front", front, SceneType::idCardFront, std::nullopt},
      {"front as either side", front, SceneType::idCard, std::nullopt},
      {"front as back", front, SceneType::idCardBack, mismatch("身份证背面", "身份证正面")},
      {"one keyword and a spaced number", numberedFront, SceneType::idCardBack, mismatch("身份证背面", "身份证正面")},
      {"one keyword without a number", "姓名 1101", SceneType::idCardBack, std::nullopt},
      {"one label that counts twice", back, SceneType::idCardFront, mismatch("身份证正面", "身份证背面")},
      {"one keyword and a range", rangedBack, SceneType::idCardFront, mismatch("身份证正面", "身份证背面")},
      {"bank card as front", bank, SceneType::idCardFront, mismatch("身份证正面", "银行卡")},
      {"bank card as either side", bank, SceneType::idCard, mismatch("身份证", "银行卡")},
      {"front as bank card", front, SceneType::bankCard, mismatch("银行卡", "身份证正面")},
      {"back as bank card", back, SceneType::bankCard, mismatch("银行卡", "身份证背面")},
      {"both kinds at once", front + bank, SceneType::bankCard, std::nullopt},
      {"lower case letters", "visa", SceneType::idCard, mismatch("身份证", "银行卡")},
      {"the mixed-case mark as written", "UnionPay", SceneType::idCard, mismatch("身份证", "银行卡")},
      {"the mixed-case mark in capitals", "UNIONPAY", SceneType::idCard, std::nullopt},
      {"valid thru", "UNIONPAY valid", SceneType::idCard, mismatch("身份证", "银行卡")},
  };
  for (const auto& [what, text, expected, error] : cases)
    EXPECT_EQ(validate(text, expected), error) << what << ": " << text;
}

}  // namespace
}  // namespace pravik
