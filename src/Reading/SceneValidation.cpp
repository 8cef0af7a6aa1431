#include "Reading/SceneValidation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Parsers/CitizenNumber.h"
#include "Records/OCRError.h"
#include "Utils/OCRLogger.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr std::array<std::string_view, 7> frontKeywords{"姓名",     "性别",     "民族",      "住址",
                                                        "公民身份", "身份号码", "居民身份证"};
constexpr std::string_view officeLabel = "签发机关";
constexpr std::array<std::string_view, 4> backKeywords{officeLabel, "有效期限", "有效期", "中华人民共和国"};

/// A keyword in capitals is looked for in the text in capitals; one in mixed case only as it is written.
struct BankKeyword {
  std::string_view word;
  bool anyCase;
};
constexpr std::array<BankKeyword, 11> bankKeywords{{{"银行", true},
                                                    {"BANK", true},
                                                    {"UnionPay", false},
                                                    {"VISA", true},
                                                    {"MASTERCARD", true},
                                                    {"JCB", true},
                                                    {"借记卡", true},
                                                    {"信用卡", true},
                                                    {"储蓄卡", true},
                                                    {"贷记卡", true},
                                                    {"银联", true}}};
constexpr const char* validityRangePattern = R"((\d{8})\s*[-—–]\s*(\d{8}|长期))";

/// A block with so many is that of a card's number, whole or nearly so.
constexpr std::size_t digitsOfACardNumber = 14;

bool isCardNumber(const Observation& block) {
  return asciiDigits(block.text).size() >= digitsOfACardNumber;
}

int countContained(std::string_view text, std::span<const std::string_view> words) {
  int count = 0;
  for (const std::string_view word : words) count += contains(text, word) ? 1 : 0;
  return count;
}

/// What a text looks like.
struct SceneFeatures {
  bool looksFront = false;
  bool looksBack = false;
  bool looksBank = false;
  /// The bank keywords found, for the log.
  std::string matchedBankKeywords;

  bool looksIDCard() const { return looksFront || looksBack; }
};

SceneFeatures featuresOf(const std::string& text) {
  const std::string compact = removingAll(text, " ");
  const std::string upper = uppercased(text);
  SceneFeatures features;

  const int front = countContained(text, frontKeywords);
  features.looksFront = front >= 2 || (front >= 1 && RegexHelper::matches(citizenNumberPattern, compact));
  const int back = countContained(text, backKeywords);
  features.looksBack = back >= 2 || (back >= 1 && RegexHelper::matches(validityRangePattern, compact));

  for (const BankKeyword& keyword : bankKeywords) {
    if (!contains(keyword.anyCase ? upper : text, keyword.word)) continue;
    if (!features.matchedBankKeywords.empty()) features.matchedBankKeywords += "、";
    features.matchedBankKeywords += keyword.word;
  }
  features.looksBank = !features.matchedBankKeywords.empty() || contains(upper, "VALID") || contains(upper, "THRU");
  return features;
}

/// Why a text does not belong to the expected scene.
struct Mismatch {
  std::string warning;
  OCRError error;
};

Mismatch mismatchOf(const std::string& expected, const std::string& detected, const std::string& evidence) {
  return {"场景不匹配: 期望" + expected + "，但检测到" + detected + evidence,
          OCRError::sceneMismatch(expected, detected)};
}

std::optional<Mismatch> findMismatch(const SceneFeatures& found, SceneType expected) {
  const bool onlyBank = found.looksBank && !found.looksIDCard();
  switch (expected) {
    case SceneType::idCard:
      if (onlyBank) return mismatchOf("身份证", "银行卡", "特征 (银行卡关键词=" + found.matchedBankKeywords + ")");
      return std::nullopt;
    case SceneType::idCardFront:
      if (onlyBank) return mismatchOf("身份证正面", "银行卡", "特征");
      if (found.looksBack && !found.looksFront)
        return mismatchOf("身份证正面", "身份证背面", "特征 (签发机关/有效期限)");
      return std::nullopt;
    case SceneType::idCardBack:
      if (onlyBank) return mismatchOf("身份证背面", "银行卡", "特征");
      if (found.looksFront && !found.looksBack) return mismatchOf("身份证背面", "身份证正面", "特征 (姓名/性别/住址)");
      return std::nullopt;
    case SceneType::bankCard:
      if (!found.looksIDCard() || found.looksBank) return std::nullopt;
      return mismatchOf("银行卡", found.looksFront ? "身份证正面" : "身份证背面", "");
  }
  return std::nullopt;
}

}  // namespace

void validateScene(const Observations& observations, SceneType expected) {
  const std::optional<Mismatch> mismatch = findMismatch(featuresOf(lineText(observations)), expected);
  if (!mismatch) return;
  OCRLogger::warning([&] { return mismatch->warning; });
  throw OCRError(mismatch->error);
}

int documentsIn(const Observations& observations) {
  const std::string text = lineText(observations);
  const SceneFeatures found = featuresOf(text);
  int numbers = 0, offices = 0, cardNumbers = 0;
  for (const Observation& block : observations) {
    cardNumbers += isCardNumber(block) ? 1 : 0;
    numbers += RegexHelper::matches(citizenNumberPattern, removingAll(block.text, " ")) ? 1 : 0;
    offices += contains(block.text, officeLabel) ? 1 : 0;
  }
  return (found.looksFront ? std::max(1, numbers) : 0) + (found.looksBack ? std::max(1, offices) : 0) +
         (found.looksBank ? std::max(1, cardNumbers - numbers) : 0);
}

std::optional<OCRScanMode> documentIn(const Observations& observations) {
  const SceneFeatures found = featuresOf(lineText(observations));
  if (found.looksFront) return OCRScanMode::idCardFront;
  if (found.looksBack) return OCRScanMode::idCardBack;
  return found.looksBank ? std::optional(OCRScanMode::bankCard) : std::nullopt;
}

bool hasCardNumber(const Observations& observations) {
  return std::ranges::any_of(observations, isCardNumber);
}

}  // namespace pravik
