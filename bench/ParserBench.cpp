#include <benchmark/benchmark.h>

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

template <class Parser>
void parse(benchmark::State& state, const Observations& blocks) {
  if (!Parser{}.parse(blocks)) return state.SkipWithError("no record");
  for (auto _ : state) benchmark::DoNotOptimize(Parser{}.parse(blocks));
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

}  // namespace
}  // namespace pravik::bench
