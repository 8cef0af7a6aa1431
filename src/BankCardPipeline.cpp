#include "BankCardPipeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberFusion.h"
#include "Parsers/CardText.h"
#include "Pravik.h"
#include "RunOnPool.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

constexpr double numberRowThreshold = 0.03;
constexpr std::size_t numberRowDigits = 6;
/// So many variants of the band that agree end the stage.
constexpr int decidingVotes = 2;

/// What the stages of one call have found so far.
struct Findings {
  CardNumberPieces pieces;
  PartialBankCardInfo partialInfo;
  /// That of the latest reading that found one.
  std::optional<double> detectedCardNumberY;
};

/// One of the stages that read the whole card.
struct WholeCardStage {
  BankCardStage stage;
  std::optional<Bitmap> (ImagePreprocessor::*prepare)(const Image&) const;
  std::string_view debugLabel;
  std::string_view foundText;
  std::string_view noNumberText;
  std::string_view noTextText;
};
constexpr std::array<WholeCardStage, 2> wholeCardStages{{
    {BankCardStage::firstReading, &ImagePreprocessor::preprocessForBankCard, "银行卡-自适应预处理",
     "首次 Vision 识别到", "首次解析失败（卡号未提取），准备增强重试", "首次 Vision 返回 0 个文本块，准备增强重试"},
    {BankCardStage::enhancedRetry, &ImagePreprocessor::preprocessForBankCardEnhanced, "银行卡-增强预处理",
     "增强重试 Vision 识别到", "增强重试解析失败，准备 ROI 裁剪重试",
     "增强重试 Vision 返回 0 个文本块，准备 ROI 裁剪重试"},
}};

CardNumberPieces piecesOf(const Observations& observations) {
  return {extractCardNumberFragments(observations), extractBINHints(bankCardRows(observations))};
}

void debugSaveImage(const BankCardPipeline& pipeline, const std::optional<Bitmap>& bitmap, std::string_view label) {
  if (!pipeline.debugPictures || !bitmap) return;
  try {
    pipeline.debugPictures->save(*bitmap, std::string(label));
    OCRLogger::debug([&] { return fmt::format(" 调试图片已保存到相册: {}", label); });
  } catch (const std::exception& error) {
    OCRLogger::warning([&] { return fmt::format("调试图片保存失败: {} ({})", label, error.what()); });
  }
}

Image straightened(const BankCardPipeline& pipeline, const Image& image) {
  debugSaveImage(pipeline, image.bitmap, "银行卡-原图");
  std::optional<Image> corrected = pipeline.preprocessor.attemptPerspectiveCorrection(image);
  if (!corrected) return image;
  debugSaveImage(pipeline, corrected->bitmap, "银行卡-透视矫正");
  return *std::move(corrected);
}

std::optional<Bitmap> preparedFor(const WholeCardStage& stage, const BankCardPipeline& pipeline, const Image& card) {
  std::optional<Bitmap> prepared = (pipeline.preprocessor.*stage.prepare)(card);
  debugSaveImage(pipeline, prepared, stage.debugLabel);
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
std::optional<BankCardInfo> cardIn(const Observations& observations, const BankCardParser& parser,
                                   const WholeCardStage& stage, Findings& findings) {
  if (observations.empty()) {
    OCRLogger::warning([&] { return std::string(stage.noTextText); });
    return std::nullopt;
  }
  OCRLogger::info([&] { return fmt::format("{} {} 个文本块", stage.foundText, observations.size()); });
  validateScene(observations, PravikSDK::SceneType::bankCard);
  if (auto info = parser.parse(observations)) return info;
  findings.partialInfo = parser.parsePartialInfo(observations);
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

Band cutBand(const BankCardPipeline& pipeline, const Image& card, std::optional<double> centerY) {
  Band band;
  if (!card.bitmap) return band;
  const Bitmap bitmap = uprightBitmap(*card.bitmap, card.orientation);
  if (centerY) {
    band.crop = pipeline.preprocessor.cropToCardNumberRegionDynamic(bitmap, *centerY);
    if (band.crop) OCRLogger::info([&] { return fmt::format("ROI 使用动态裁剪 (centerY={:.3f})", *centerY); });
  }
  if (!band.crop) {
    band.crop = pipeline.preprocessor.cropToCardNumberRegion(bitmap);
    if (band.crop) OCRLogger::info([] { return std::string("ROI 使用固定比例裁剪"); });
  }
  if (!band.crop) return band;
  debugSaveImage(pipeline, band.crop, "银行卡-ROI原始裁剪");
  band.variants = pipeline.preprocessor.preprocessCardNumberROI(*band.crop);
  return band;
}

/// The number in one picture of the band, when it passes the Luhn check; the pieces are added to the findings.
std::optional<BankCardInfo> soundNumberIn(const Observations& observations, const BankCardParser& parser,
                                          Findings& findings) {
  if (observations.empty()) return std::nullopt;
  findings.pieces.append(piecesOf(observations));
  auto info = parser.parse(observations);
  if (!info) return std::nullopt;
  const std::string digits = asciiDigits(info->cardNumber);
  const bool sound = luhnCheck(digits);
  OCRLogger::debug([&] { return fmt::format("ROI 识别到卡号: {} luhn={}", digits, sound); });
  return sound ? info : std::nullopt;
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
Task<std::optional<BankCardInfo>> readVariants(const BankCardPipeline& pipeline,
                                               std::vector<ImagePreprocessor::Variant> variants, Findings& findings) {
  std::vector<BandVotes> ballot;
  for (ImagePreprocessor::Variant& variant : variants) {
    const Observations observations =
        co_await pipeline.recognizer.recognize(std::move(variant.bitmap), TextRecognizer::Options::bankCard);
    OCRLogger::info([&] { return fmt::format("ROI 变体({}) 识别到 {} 个文本块", variant.label, observations.size()); });
    const auto info = soundNumberIn(observations, pipeline.parser, findings);
    if (!info) continue;
    const BandVotes& entry = vote(ballot, *info);
    if (entry.votes < decidingVotes) continue;
    OCRLogger::debug([&] {
      return fmt::format("ROI 早退（{} 得到 {} 票，变体{}）", asciiDigits(entry.info.cardNumber), entry.votes,
                         variant.label);
    });
    co_return entry.info;
  }
  if (ballot.empty()) co_return std::nullopt;
  const BandVotes& winner = *std::ranges::max_element(ballot, {}, &BandVotes::votes);
  OCRLogger::debug(
      [&] { return fmt::format("ROI 多数投票结果: {} (得票{})", asciiDigits(winner.info.cardNumber), winner.votes); });
  co_return winner.info;
}

Task<std::optional<BankCardInfo>> recognizeBankCardWithROI(const BankCardPipeline& pipeline, Image card,
                                                           Findings& findings) {
  std::function<Result<Band>()> cut = [=, centerY = findings.detectedCardNumberY] {
    return cutBand(pipeline, card, centerY);
  };
  Band band = co_await runOnPool(pipeline.dispatch, std::move(cut));
  if (!band.crop) {
    OCRLogger::warning([] { return std::string("ROI 裁剪失败"); });
    co_return std::nullopt;
  }
  if (auto info = co_await readVariants(pipeline, std::move(band.variants), findings)) {
    OCRLogger::info([] { return std::string("ROI 识别成功，已合并全卡附加信息"); });
    co_return merged(*std::move(info), findings.partialInfo);
  }
  OCRLogger::warning([] { return std::string("ROI 所有变体均识别失败"); });

  // The last resort: the unprocessed band at times keeps what every enhancement drowns.
  const Observations observations =
      co_await pipeline.recognizer.recognize(*std::move(band.crop), TextRecognizer::Options::bankCard);
  auto info = soundNumberIn(observations, pipeline.parser, findings);
  if (!info) co_return std::nullopt;
  OCRLogger::info([] { return std::string("ROI 兜底成功（原始图），已合并全卡附加信息"); });
  co_return merged(*std::move(info), findings.partialInfo);
}

std::optional<BankCardInfo> fused(const Findings& findings) {
  const CardNumberPieces& pieces = findings.pieces;
  if (pieces.fragments.empty()) return std::nullopt;
  OCRLogger::info([&] {
    return fmt::format("银行卡识别 — 尝试多帧融合 ({}个片段, {}个BIN提示)", pieces.fragments.size(),
                       pieces.binHints.size());
  });
  const auto number = fuseCardNumber(pieces.fragments, pieces.binHints, fusedCardNumberLength);
  if (!number) return std::nullopt;
  BankCardInfo info;
  info.cardNumber = formatCardNumber(*number);
  info.rawCardNumber = *number;
  info = merged(std::move(info), findings.partialInfo);
  OCRLogger::debug([&] { return "多帧融合最终结果: " + info.cardNumber; });
  return info;
}

}  // namespace

Task<BankCardReading> readBankCard(BankCardPipeline pipeline, Image image) {
  if (image.bitmap && !hasAllowedSize(*image.bitmap)) throw OCRError::invalidImage();
  std::function<Result<Image>()> straighten = [=] { return straightened(pipeline, image); };
  const Image card = co_await runOnPool(pipeline.dispatch, std::move(straighten));
  image.bitmap.reset();
  Findings findings;

  for (const WholeCardStage& stage : wholeCardStages) {
    std::function<Result<std::optional<Bitmap>>()> prepare = [=] { return preparedFor(stage, pipeline, card); };
    std::optional<Bitmap> prepared = co_await runOnPool(pipeline.dispatch, std::move(prepare));
    if (!prepared) continue;
    const Observations observations =
        co_await pipeline.recognizer.recognize(*std::move(prepared), TextRecognizer::Options::bankCard);
    if (auto info = cardIn(observations, pipeline.parser, stage, findings))
      co_return BankCardReading{*std::move(info), stage.stage};
  }
  if (auto info = co_await recognizeBankCardWithROI(pipeline, card, findings))
    co_return BankCardReading{*std::move(info), BankCardStage::numberBand};
  if (auto info = fused(findings)) co_return BankCardReading{*std::move(info), BankCardStage::fusion};

  OCRLogger::error([] { return std::string("银行卡号提取失败"); });
  if (pipeline.accumulator) pipeline.accumulator->add(std::move(findings.pieces), findings.partialInfo);
  throw OCRError::insufficientText();
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
    return fmt::format("动态ROI检测: 卡号行 midY={:.3f} (合并{}位数字, '{}')", row.key, row.digits, row.representative);
  });
  return row.key;
}

}  // namespace pravik
