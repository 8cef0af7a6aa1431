#include "Reading/BankNameRepair.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Parsers/BankName.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// Two characters that tell the bank, and "银行".
constexpr std::size_t shortName = 4;
constexpr std::size_t longestName = 8;
constexpr char32_t lastCharacter = U'行';
/// What the third character of a short name is misread as: another one makes another word, as in "中国发行".
constexpr std::u32string_view misreadSilver = U"举很根跟恨限眼良艮锒铝";
/// With these in the same place other banks are named that no table knows ("广州银行", "长安银行", "南昌银行"): left
/// over from a short name, they do not tell which one it was.
constexpr std::u32string_view sharedWithOtherBanks = U"上业东中丰京信北华南发商国大宁安广民浙海生";

bool isOneOff(std::u32string_view read, std::u32string_view name) {
  return read.size() == name.size() &&
         std::transform_reduce(read.begin(), read.end(), name.begin(), 0, std::plus<>{}, std::not_equal_to<>{}) == 1;
}

/// Whether what is left of a name tells it from those of banks that no table knows.
bool tells(std::u32string_view read, std::u32string_view name) {
  if (name.size() > shortName) return true;
  const auto wrong = static_cast<std::size_t>(std::ranges::mismatch(read, name).in1 - read.begin());
  if (wrong == 2) return misreadSilver.find(read[wrong]) != std::u32string_view::npos;
  return sharedWithOtherBanks.find(name[1 - wrong]) == std::u32string_view::npos;
}

/// The name that a run of Chinese characters was before it was misread.
std::optional<std::u32string> nameBehind(std::u32string_view read) {
  if (read.size() < shortName || read.size() > longestName || read.back() != lastCharacter) return std::nullopt;
  std::optional<std::u32string> found;
  for (const std::string_view known : chineseBankNames()) {
    std::u32string name = codePoints(known);
    if (!isOneOff(read, name)) continue;
    if (found) return std::nullopt;
    found = std::move(name);
  }
  return found && tells(read, *found) ? found : std::nullopt;
}

std::string withBankName(std::string_view block) {
  std::u32string text = codePoints(block);
  for (auto start = text.begin(); start != text.end();) {
    const auto run = std::find_if(start, text.end(), isIdeograph);
    start = std::find_if_not(run, text.end(), isIdeograph);
    if (const auto name = nameBehind({run, start})) std::ranges::copy(*name, run);
  }
  return utf8(text);
}

}  // namespace

void repairBankName(Observations& observations) {
  for (const std::string_view name : chineseBankNames())
    if (std::ranges::any_of(observations, [&](const Observation& block) { return contains(block.text, name); })) return;
  for (Observation& block : observations) block.text = withBankName(block.text);
}

}  // namespace pravik
