#include "Reading/BankCardReading.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberFusion.h"
#include "Parsers/CardText.h"
#include "Reading/CardReport.h"
#include "Reading/NumberRow.h"
#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "Reading/TextToRecord.h"
#include "Reading/UprightPicture.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr double numberRowThreshold = 0.03;
constexpr std::size_t numberRowDigits = 6;
/// So many variants of the band that agree end the stage.
constexpr int decidingVotes = 2;
/// Of a number that was put together from pieces every digit was seen by so many of the looks at its row; of one that
/// was repaired, or has an uncommon length, by more, since a repair always ends with a number that passes Luhn.
constexpr double leastSupport = 0.3;
constexpr double leastSupportOfUnlikely = 0.6;
/// A look that saw fewer digits may have seen another row.
constexpr std::size_t leastTellingDigits = 12;

/// What the stages of one call have found so far.
struct Findings {
  CardNumberPieces pieces;
  PartialBankCardInfo partialInfo;
  /// That of the latest reading that found one.
  std::optional<double> detectedCardNumberY;
  bool hasText = false;
  /// What the looks at the number's row saw, of every stage.
  std::vector<SeenDigits> looks;
  /// The card number that they give together; empty when they give none. Whether they agree well enough on it.
  std::string votedNumber;
  bool isVoteSound = false;
};

/// One of the stages that read the whole card.
struct WholeCardStage {
  BankCardStage stage;
  std::optional<Bitmap> (ImagePreprocessor::*prepare)(const Image&) const;
  std::string_view debugLabel;
  std::string_view foundText;
  /// Whether the count is logged even when it is zero.
  bool tellsZero;
  std::string_view noNumberText;
  std::string_view noTextText;
};
constexpr std::array<WholeCardStage, 2> wholeCardStages{{
    {BankCardStage::firstReading, &ImagePreprocessor::preprocessForBankCard, "银行卡-自适应预处理",
     "首次 Vision 识别到", false, "首次解析失败（卡号未提取），准备增强重试",
     "首次 Vision 返回 0 个文本块，准备增强重试"},
    {BankCardStage::enhancedRetry, &ImagePreprocessor::preprocessForBankCardEnhanced, "银行卡-增强预处理",
     "增强重试 Vision 识别到", true, "增强重试解析失败，准备 ROI 裁剪重试",
     "增强重试 Vision 返回 0 个文本块，准备 ROI 裁剪重试"},
}};

CardNumberPieces piecesOf(const Observations& observations) {
  return {extractCardNumberFragments(observations), extractBINHints(bankCardRows(observations))};
}

Observations blocksOn(const ReadingParts& parts, const Bitmap& bitmap) {
  return postCorrected(parts.recognize(bitmap, TextRecognizer::Options::bankCard), SceneType::bankCard);
}

std::optional<BankCardInfo> parsedCard(const Observations& observations) {
  const std::optional<Record> record = recordInCorrected(observations, OCRScanMode::bankCard);
  return record ? std::optional(std::get<BankCardInfo>(*record)) : std::nullopt;
}

/// Whether the looks at the row let a number stand. What passes Luhn against them is a chance, as one wrong number in
/// ten does.
bool isBorneOut(const BankCardInfo& info, const Findings& findings) {
  const std::string digits = asciiDigits(info.cardNumber);
  if (findings.looks.empty() || !luhnCheck(digits)) return true;
  if (digits == findings.votedNumber && findings.isVoteSound) return true;
  if (!findings.votedNumber.empty() && digits != findings.votedNumber) return false;
  const double support = supportFor(digits, findings.looks);
  OCRLogger::debug([&] { return formatted("卡号 {} 的读取支持度={:.2f}", digits, support); });
  const bool isLikely = isCommonLength(digits.size()) && digits == asciiDigits(info.rawCardNumber);
  return support >= (isLikely ? leastSupport : leastSupportOfUnlikely);
}

std::optional<Bitmap> preparedFor(const WholeCardStage& stage, const ReadingParts& parts, const Image& card) {
  std::optional<Bitmap> prepared = (parts.preprocessor.*stage.prepare)(card);
  parts.debugSaveImage({.bitmap = prepared}, stage.debugLabel);
  return prepared;
}

/// The same record with what another reading found where it found nothing itself.
BankCardInfo merged(BankCardInfo info, const PartialBankCardInfo& partialInfo) {
  if (!info.bankName) info.bankName = partialInfo.bankName;
  if (!info.cardType) info.cardType = partialInfo.cardType;
  if (!info.cardholderName) info.cardholderName = partialInfo.cardholderName;
  return info;
}

/// The card that the whole reading gives. Without a number, what was found is added to the findings.
std::optional<BankCardInfo> cardIn(const Observations& observations, const WholeCardStage& stage, Findings& findings) {
  if (!observations.empty() || stage.tellsZero)
    OCRLogger::info([&] { return formatted("{} {} 个文本块", stage.foundText, observations.size()); });
  if (observations.empty()) {
    OCRLogger::warning([&] { return std::string(stage.noTextText); });
    return std::nullopt;
  }
  findings.hasText = true;
  validateScene(observations, SceneType::bankCard);
  if (auto info = parsedCard(observations); info && isBorneOut(*info, findings)) return info;
  findings.partialInfo = partialCardInCorrected(observations);
  findings.pieces.append(piecesOf(observations));
  if (const auto centerY = detectCardNumberRowY(observations)) findings.detectedCardNumberY = centerY;
  OCRLogger::warning([&] { return std::string(stage.noNumberText); });
  return std::nullopt;
}

/// The band around the number: as it was cut, and enhanced in several ways.
struct Band {
  std::optional<Bitmap> crop;
  std::vector<ImagePreprocessor::Variant> variants;
};

Band cutBand(const ReadingParts& parts, const Image& card, std::optional<double> centerY) {
  Band band;
  if (!card.bitmap) return band;
  const Bitmap bitmap = uprightBitmap(*card.bitmap, card.orientation);
  if (centerY) {
    band.crop = parts.preprocessor.cropToCardNumberRegionDynamic(bitmap, *centerY);
    if (band.crop) OCRLogger::info([&] { return formatted("ROI 使用动态裁剪 (centerY={:.3f})", *centerY); });
  }
  if (!band.crop) {
    band.crop = parts.preprocessor.cropToCardNumberRegion(bitmap);
    if (band.crop) OCRLogger::info([] { return std::string("ROI 使用固定比例裁剪"); });
  }
  if (!band.crop) return band;
  parts.debugSaveImage({.bitmap = band.crop}, "银行卡-ROI原始裁剪");
  band.variants = parts.preprocessor.preprocessCardNumberROI(*band.crop);
  return band;
}

/// The number in one picture of the band, when it passes the Luhn check; the pieces are added to the findings.
std::optional<BankCardInfo> soundNumberIn(const Observations& observations, Findings& findings) {
  if (observations.empty()) return std::nullopt;
  findings.pieces.append(piecesOf(observations));
  auto info = parsedCard(observations);
  if (!info) return std::nullopt;
  const std::string digits = asciiDigits(info->cardNumber);
  const bool sound = luhnCheck(digits);
  OCRLogger::debug([&] { return formatted("ROI 识别到卡号: {} luhn={}", digits, sound); });
  return sound && isBorneOut(*info, findings) ? info : std::nullopt;
}

/// A number and how many variants of the band read it.
struct BandVotes {
  BankCardInfo info;
  int votes;
};

/// The number's entry after one more vote for it.
const BandVotes& vote(std::vector<BandVotes>& ballot, const BankCardInfo& info) {
  auto entry = std::ranges::find_if(
      ballot, [&](const BandVotes& counted) { return counted.info.cardNumber == info.cardNumber; });
  if (entry == ballot.end()) entry = ballot.insert(ballot.end(), BandVotes{info, 0});
  ++entry->votes;
  return *entry;
}

/// Reads the variants of the band until two agree; else the number with the most votes wins, of several the one that
/// was read first.
std::optional<BankCardInfo> readVariants(const ReadingParts& parts,
                                         const std::vector<ImagePreprocessor::Variant>& variants, Findings& findings) {
  std::vector<BandVotes> ballot;
  for (const ImagePreprocessor::Variant& variant : variants) {
    if (!parts.goesOn()) break;
    const Observations observations = blocksOn(parts, variant.bitmap);
    OCRLogger::info([&] { return formatted("ROI 变体({}) 识别到 {} 个文本块", variant.label, observations.size()); });
    const auto info = soundNumberIn(observations, findings);
    if (!info) continue;
    const BandVotes& entry = vote(ballot, *info);
    if (entry.votes < decidingVotes) continue;
    OCRLogger::debug([&] {
      return formatted("ROI 早退（{} 得到 {} 票，变体{}）", asciiDigits(entry.info.cardNumber), entry.votes,
                       variant.label);
    });
    return entry.info;
  }
  if (ballot.empty()) return std::nullopt;
  const BandVotes& winner = *std::ranges::max_element(ballot, {}, &BandVotes::votes);
  OCRLogger::debug(
      [&] { return formatted("ROI 多数投票结果: {} (得票{})", asciiDigits(winner.info.cardNumber), winner.votes); });
  return winner.info;
}

std::optional<BankCardInfo> recognizeBankCardWithROI(const ReadingParts& parts, const Image& card, Findings& findings) {
  const Band band = cutBand(parts, card, findings.detectedCardNumberY);
  if (!band.crop) {
    OCRLogger::warning([] { return std::string("ROI 裁剪失败"); });
    return std::nullopt;
  }
  if (auto info = readVariants(parts, band.variants, findings)) {
    OCRLogger::info([] { return std::string("ROI 识别成功，已合并全卡附加信息"); });
    return merged(*std::move(info), findings.partialInfo);
  }
  OCRLogger::warning([] { return std::string("ROI 所有变体均识别失败"); });
  if (!parts.goesOn()) return std::nullopt;

  // The last resort: the unprocessed band at times keeps what every enhancement drowns.
  auto info = soundNumberIn(blocksOn(parts, *band.crop), findings);
  if (!info) return std::nullopt;
  OCRLogger::info([] { return std::string("ROI 兜底成功（原始图），已合并全卡附加信息"); });
  return merged(*std::move(info), findings.partialInfo);
}

/// The pieces of all stages put together. Where the engine can look at the row itself, its looks must bear the number
/// out: of numbers made of misread pieces one in ten passes Luhn.
std::optional<BankCardInfo> fused(const ReadingParts& parts, const Findings& findings) {
  const CardNumberPieces& pieces = findings.pieces;
  if (pieces.fragments.empty()) return std::nullopt;
  OCRLogger::info([&] {
    return formatted("银行卡识别 — 尝试多帧融合 ({}个片段, {}个BIN提示)", pieces.fragments.size(),
                     pieces.binHints.size());
  });
  const auto number = fuseCardNumber(pieces.fragments, pieces.binHints, fusedCardNumberLength);
  if (!number) return std::nullopt;
  if (parts.recognizer.readsDigits() && supportFor(*number, findings.looks) < leastSupport) return std::nullopt;
  BankCardInfo info;
  info.cardNumber = formatCardNumber(*number);
  info.rawCardNumber = *number;
  info = merged(std::move(info), findings.partialInfo);
  OCRLogger::debug([&] { return "多帧融合最终结果: " + info.cardNumber; });
  return info;
}

/// The card and the stage that gave its number; absent when none did.
std::optional<Reading> readInStages(const CardOnPicture& card, Findings& findings) {
  const ReadingParts& parts = card.parts;
  Observations observations;
  const auto reading = [&](BankCardInfo info, BankCardStage stage) {
    Reading found = withReport(parts, card.size(), observations, std::move(info));
    found.report.stage = stage;
    return found;
  };
  for (const WholeCardStage& stage : wholeCardStages) {
    if (!parts.goesOn()) break;
    const std::optional<Bitmap> prepared = preparedFor(stage, parts, card.image);
    if (!prepared) continue;
    observations = blocksOn(parts, *prepared);
    if (const auto upright = turnedUpright(parts, card.image, observations))
      return readBankCard(upright->parts, upright->image);
    if (const auto row = readNumberRow(parts, *prepared, card.outline, observations)) {
      std::ranges::copy_if(row->looks, std::back_inserter(findings.looks),
                           [](const SeenDigits& look) { return look.size() >= leastTellingDigits; });
      findings.isVoteSound = row->voted.isSound;
      findings.votedNumber = passesAsCardNumber(row->voted.digits) ? row->voted.digits : "";
      if (row->voted.isSound) observations = withNumberRow(observations, *row, prepared->size());
    }
    if (auto info = cardIn(observations, stage, findings)) return reading(*std::move(info), stage.stage);
  }
  if (parts.goesOn())
    if (auto info = recognizeBankCardWithROI(parts, card.image, findings))
      return reading(*std::move(info), BankCardStage::numberBand);
  if (auto info = fused(parts, findings)) return reading(*std::move(info), BankCardStage::fusion);
  return std::nullopt;
}

}  // namespace

Reading readBankCard(const ReadingParts& parts, const Image& image) {
  if (image.bitmap && !isUsable(image)) throw OCRError::invalidImage();
  Findings findings;
  if (auto reading = readInStages(cardOn(parts, image, "银行卡"), findings)) return *std::move(reading);
  OCRLogger::error([] { return std::string("银行卡号提取失败"); });
  const bool hasText = findings.hasText;
  if (parts.accumulator) parts.accumulator->add(std::move(findings.pieces), findings.partialInfo);
  return withoutRecord(parts, image, hasText);
}

std::optional<double> detectCardNumberRowY(const Observations& observations) {
  struct Row {
    double key;
    std::size_t digits;
    std::size_t mostDigits;
    std::string_view representative;
  };
  std::vector<Row> rows;
  for (const auto& block : observations) {
    const std::size_t digits = asciiDigits(block.text).size();
    if (digits == 0) continue;
    const double key = topOriginMidY(block);
    const auto row =
        std::ranges::find_if(rows, [&](const Row& known) { return std::abs(known.key - key) < numberRowThreshold; });
    if (row == rows.end()) {
      rows.push_back({key, digits, digits, block.text});
      continue;
    }
    row->digits += digits;
    if (digits <= row->mostDigits) continue;
    row->mostDigits = digits;
    row->representative = block.text;
  }
  std::erase_if(rows, [](const Row& row) { return row.digits < numberRowDigits; });
  if (rows.empty()) return std::nullopt;
  const Row& row = *std::ranges::max_element(rows, {}, &Row::digits);
  OCRLogger::debug([&] {
    return formatted("动态ROI检测: 卡号行 midY={:.3f} (合并{}位数字, '{}')", row.key, row.digits, row.representative);
  });
  return row.key;
}

}  // namespace pravik
