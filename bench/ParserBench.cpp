#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

#include "Parsers/BankCardParser.h"
#include "Parsers/CardNumberFusion.h"
#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"

namespace pravik::bench {
namespace {

// What the engine reads from two photographed sample cards.
const Observations& portraitSide() {
  static const Observations blocks{
      {"姓名", 0.99F, {0.080, 0.817, 0.062, 0.062}},
      {"欧阳海燕", 0.98F, {0.170, 0.809, 0.170, 0.075}},
      {"性别 女", 0.99F, {0.080, 0.700, 0.150, 0.064}},
      {"民族 维吾尔", 0.99F, {0.265, 0.700, 0.190, 0.064}},
      {"出生 1990 年 3 月 7 日", 0.97F, {0.080, 0.583, 0.420, 0.064}},
      {"住址", 0.99F, {0.080, 0.460, 0.062, 0.062}},
      {"新疆维吾尔自治区阿克苏地区库", 0.98F, {0.170, 0.458, 0.420, 0.066}},
      {"车县幸福路人民小区12号楼", 0.97F, {0.170, 0.375, 0.390, 0.066}},
      {"3单元402室", 0.98F, {0.170, 0.292, 0.190, 0.064}},
      {"公民身份号码", 0.99F, {0.080, 0.103, 0.210, 0.064}},
      {"652923199003071226", 0.99F, {0.340, 0.098, 0.520, 0.075}},
  };
  return blocks;
}

const Observations& emblemSide() {
  static const Observations blocks{
      {"中华人民共和国", 0.99F, {0.360, 0.770, 0.470, 0.090}},
      {"居民身份证", 0.99F, {0.360, 0.620, 0.470, 0.120}},
      {"签发机关", 0.99F, {0.240, 0.215, 0.150, 0.064}},
      {"库车县公安局", 0.98F, {0.410, 0.215, 0.230, 0.064}},
      {"有效期限", 0.99F, {0.240, 0.095, 0.150, 0.064}},
      {"2015.03.01-2035.03.01", 0.99F, {0.410, 0.095, 0.420, 0.064}},
  };
  return blocks;
}

/// Seventeen digits for sixteen: no candidate passes the Luhn check, so that every repair is tried.
const Observations& doubtfulBankCard() {
  static const Observations blocks{
      {"招商银行", 0.99F, {0.076, 0.815, 0.190, 0.075}},
      {"CHINA MERCHANTS BANK", 0.98F, {0.076, 0.760, 0.280, 0.045}},
      {"信用卡 CREDIT CARD", 0.98F, {0.600, 0.610, 0.300, 0.055}},
      {"6281 5225 88003 1169", 0.97F, {0.090, 0.360, 0.810, 0.090}},
      {"6281", 0.99F, {0.100, 0.320, 0.090, 0.045}},
      {"MONTH/YEAR", 0.95F, {0.440, 0.290, 0.110, 0.030}},
      {"VALID", 0.97F, {0.355, 0.255, 0.060, 0.030}},
      {"02/25", 0.98F, {0.430, 0.240, 0.150, 0.055}},
      {"THRU", 0.97F, {0.360, 0.220, 0.055, 0.030}},
      {"MA YUNFEI", 0.96F, {0.076, 0.100, 0.260, 0.060}},
      {"银联 UnionPay", 0.98F, {0.640, 0.100, 0.280, 0.060}},
  };
  return blocks;
}

template <class Parser>
void parse(benchmark::State& state, const Observations& blocks) {
  if (!Parser{}.parse(blocks)) return state.SkipWithError("no record");
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(Parser{}.parse(blocks));
  state.counters["records/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
void parsePortraitSide(benchmark::State& state) {
  parse<IDCardFrontParser>(state, portraitSide());
}
BENCHMARK(parsePortraitSide)->Name("parse/portrait-side");

void parseEmblemSide(benchmark::State& state) {
  parse<IDCardBackParser>(state, emblemSide());
}
BENCHMARK(parseEmblemSide)->Name("parse/emblem-side");

void parseBankCard(benchmark::State& state) {
  parse<BankCardParser>(state, doubtfulBankCard());
}
BENCHMARK(parseBankCard)->Name("parse/bank-card/no-sound-number");

/// Five readings of eight fragments: only one anchored by the hint, each next placed by the one before.
void fuseFragments(benchmark::State& state) {
  constexpr std::string_view number = "6222021234567894";
  constexpr std::size_t readings = 5, fragmentsOfAReading = 8, length = 6;
  std::vector<std::string> fragments;
  fragments.reserve(readings * fragmentsOfAReading);
  for (std::size_t i = 0; i < readings * fragmentsOfAReading; ++i)
    fragments.emplace_back(number.substr((i % fragmentsOfAReading) * 10 / (fragmentsOfAReading - 1), length));
  const std::vector<std::string> hints{"6222"};
  if (!fuseCardNumber(fragments, hints, fusedCardNumberLength)) return state.SkipWithError("no number");
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(fuseCardNumber(fragments, hints, fusedCardNumberLength));
}
BENCHMARK(fuseFragments)->Name("fuse/40-fragments");

}  // namespace
}  // namespace pravik::bench
