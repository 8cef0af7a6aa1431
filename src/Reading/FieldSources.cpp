#include "Reading/FieldSources.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// What is printed on every card beside the values.
constexpr std::array<std::string_view, 9> labels{"公民身份号码", "签发机关", "有效期限", "姓名", "性别",
                                                 "民族",         "出生",     "住址",     "："};
/// A piece of a value that is shorter may stand in any block by chance.
constexpr std::size_t shortestPiece = 2;

/// What remains of a text when labels, spaces and the separators of dates are gone, and "03月" reads as "3月".
std::string core(std::string_view text) {
  std::string rest(text);
  for (const std::string_view label : labels) rest = removingAll(rest, label);
  rest = RegexHelper::replace("([年月])0", rest, "$1");
  return RegexHelper::replace(R"([\s.,/\-—–年月日]+)", rest, "");
}

bool isPiece(const std::string& block, const std::string& value) {
  return characterCount(block) >= shortestPiece && contains(value, block);
}

}  // namespace

bool feeds(std::string_view block, std::string_view value) {
  const std::string within = core(block), wanted = core(value);
  return !wanted.empty() && (contains(within, wanted) || isPiece(within, wanted));
}

Observations sourcesOf(std::string_view value, const Observations& blocks) {
  const std::string wanted = core(value);
  if (wanted.empty()) return {};
  const Observation* tightest = nullptr;
  Observations pieces;
  for (const Observation& block : blocks) {
    const std::string within = core(block.text);
    if (contains(within, wanted) && (tightest == nullptr || block.text.size() < tightest->text.size()))
      tightest = &block;
    if (isPiece(within, wanted)) pieces.push_back(block);
  }
  return tightest != nullptr ? Observations{*tightest} : pieces;
}

}  // namespace pravik
