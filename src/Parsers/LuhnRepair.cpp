#include "Parsers/LuhnRepair.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "Parsers/CardNumber.h"
#include "Utils/Format.h"
#include "Utils/OCRLogger.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

constexpr std::string_view allDigits = "0123456789";
/// A card number of the most frequent length with one digit too many.
constexpr std::size_t removableLength = 17;

struct LuhnFix {
  std::string number;
  std::size_t position;
  char oldDigit;
  char newDigit;
};

struct LuhnRemoval {
  std::size_t position;
  std::string number;
};

std::size_t firstRepairable(std::string_view number, std::string_view binPrefix) {
  return number.starts_with(binPrefix) ? binPrefix.size() : 0;
}

bool isSound(std::string_view number) {
  return isValidCardNumber(number) && luhnCheck(number);
}

std::vector<LuhnFix> digitFixes(std::string_view number, std::size_t start) {
  std::vector<LuhnFix> fixes;
  std::string form(number);
  for (std::size_t position = start; position < number.size(); ++position) {
    const char oldDigit = number[position];
    for (const char newDigit : allDigits) {
      if (newDigit == oldDigit) continue;
      form[position] = newDigit;
      if (isSound(form)) fixes.push_back({form, position, oldDigit, newDigit});
    }
    form[position] = oldDigit;
  }
  return fixes;
}

std::vector<LuhnRemoval> digitRemovals(std::string_view number, std::size_t start) {
  std::vector<LuhnRemoval> removals;
  for (std::size_t position = start; position < number.size(); ++position) {
    std::string form(number);
    form.erase(position, 1);
    if (isSound(form)) removals.push_back({position, std::move(form)});
  }
  return removals;
}

int distance(const LuhnFix& fix) {
  return std::abs(fix.newDigit - fix.oldDigit);
}

std::string describe(const LuhnFix& fix) {
  return formatted("位置{}'{}'→'{}'(dist={})", fix.position, fix.oldDigit, fix.newDigit, distance(fix));
}

std::string describe(const LuhnRemoval& removal) {
  return formatted("{}→{}", removal.position, removal.number);
}

template <class Repair>
std::string list(const std::vector<Repair>& repairs) {
  std::vector<std::string> texts;
  std::ranges::transform(repairs, std::back_inserter(texts), [](const Repair& repair) { return describe(repair); });
  return joined(texts, ", ");
}

}  // namespace

std::optional<std::string> luhnSingleDigitFix(std::string_view number, std::string_view binPrefix) {
  const std::vector<LuhnFix> fixes = digitFixes(number, firstRepairable(number, binPrefix));
  if (fixes.empty()) return std::nullopt;
  if (fixes.size() > 1) {
    OCRLogger::warning(
        [&] { return formatted("Luhn单位修正: 发现{} 个可行修正({})，放弃以免误改", fixes.size(), list(fixes)); });
    return std::nullopt;
  }
  const LuhnFix& fix = fixes.front();
  OCRLogger::info([&] {
    return formatted("Luhn单位修正: 位置{} '{}'→'{}' dist={}", fix.position, fix.oldDigit, fix.newDigit, distance(fix));
  });
  return fix.number;
}

std::optional<std::string> luhnDigitRemovalFix(std::string_view number, std::string_view binPrefix) {
  if (number.size() != removableLength) return std::nullopt;
  const std::vector<LuhnRemoval> removals = digitRemovals(number, firstRepairable(number, binPrefix));
  if (removals.empty()) return std::nullopt;
  if (removals.size() > 1) {
    OCRLogger::warning([&] {
      return formatted("Luhn删位修正: 发现{} 个可行删除({})，放弃以免误改", removals.size(), list(removals));
    });
    return std::nullopt;
  }
  OCRLogger::debug(
      [&] { return formatted("Luhn删位修正: 删除位置{} {}", removals.front().position, removals.front().number); });
  return removals.front().number;
}

}  // namespace pravik
