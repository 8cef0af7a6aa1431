#include "Reading/CorrectionRules.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "Utils/Text.h"

namespace pravik {
namespace {

/// The portrait side's, then the emblem side's.
constexpr std::array<std::string_view, 10> labels{
    "姓名", "性别", "民族", "出生", "住址", "公民身份号码", "签发机关", "有效期限", "中华人民共和国", "居民身份证"};
constexpr std::size_t portraitLabels = 6;
constexpr std::size_t shortLabel = 2;

/// A character of a label and what it is misread as, which looks much like it.
struct LookAlikes {
  char32_t character;
  std::u32string_view misread;
};
constexpr std::array<LookAlikes, 14> lookAlikes{{
    {U'姓', U"性胜娃妊姐"},
    {U'名', U"各召石台"},
    {U'性', U"姓惟牲怡"},
    {U'别', U"列刖到另则"},
    {U'民', U"氏良艮"},
    {U'族', U"旅旋旌"},
    {U'出', U"岀屮击"},
    {U'生', U"牛主尘圭"},
    {U'住', U"佳往任注隹仕"},
    {U'址', U"扯祉坛圵趾止"},
    {U'码', U"玛吗妈骂马犸"},
    {U'关', U"夫天矢失芙美"},
    {U'限', U"根眼很跟阻恨"},
    {U'证', U"正征讧江"},
}};
/// No surname and no address begins with these characters of short labels.
constexpr std::u32string_view beginsNoValue = U"姓性出";
/// A label that stands behind the mark of the gender follows so early in its block.
constexpr std::size_t longestGenderPart = 5;
/// Enough of a block for that and the longest label.
constexpr std::size_t longestLabelledBytes = 64;

bool looksLike(char32_t character, char32_t read) {
  const auto* row = std::ranges::find(lookAlikes, character, &LookAlikes::character);
  return row != lookAlikes.end() && row->misread.find(read) != std::u32string_view::npos;
}

/// What is left of a reading and of the label that it should be, without what both begin and end with.
struct Difference {
  std::u32string_view read;
  std::u32string_view label;

  bool isSubstitution() const { return read.size() == 1 && label.size() == 1; }
  bool isOneCharacter() const { return read.size() <= 1 && label.size() <= 1; }
};

Difference difference(std::u32string_view read, std::u32string_view label) {
  while (!read.empty() && !label.empty() && read.front() == label.front()) {
    read.remove_prefix(1);
    label.remove_prefix(1);
  }
  while (!read.empty() && !label.empty() && read.back() == label.back()) {
    read.remove_suffix(1);
    label.remove_suffix(1);
  }
  return {read, label};
}

/// Whether the first `length` characters of a text are the label but for one. In front of a value the label's last
/// character must look alike: another one may as well be the value's first, after a label that has lost its last.
bool isMisreading(std::u32string_view text, std::size_t length, std::u32string_view label) {
  if (length > text.size()) return false;
  const bool isAlone = length == text.size();
  const Difference wrong = difference(text.substr(0, length), label);
  if (wrong.isSubstitution() && looksLike(wrong.label.front(), wrong.read.front())) return true;
  if (label.size() == shortLabel)
    return isAlone && wrong.isSubstitution() && beginsNoValue.find(text.front()) != std::u32string_view::npos &&
           text.front() == label.front() && isIdeograph(wrong.read.front());
  if (!wrong.isOneCharacter() || (!wrong.read.empty() && !isIdeograph(wrong.read.front()))) return false;
  return isAlone || wrong.read.empty() || text[length - 1] == label.back();
}

/// How many characters at the beginning of a text are a misread label; absent when none are.
std::optional<std::size_t> misreadLength(std::u32string_view text, std::u32string_view label) {
  for (const std::size_t length : {label.size(), label.size() - 1, label.size() + 1})
    if (isMisreading(text, length, label)) return length;
  return std::nullopt;
}

/// Where a label may stand in a block: at its beginning and, as the labels of one line may be read together, behind
/// the mark of the gender.
std::size_t behindGender(std::u32string_view text) {
  const std::size_t mark = text.find_first_of(U"男女");
  if (mark >= longestGenderPart) return 0;
  const std::size_t next = text.find_first_not_of(U' ', mark + 1);
  return next == std::u32string_view::npos ? 0 : next;
}

/// Whether the block, which must be well-formed, had the label misread and has it now.
bool repairLabel(std::string& block, std::string_view label) {
  const std::u32string text = codePoints(std::string_view(block).substr(0, longestLabelledBytes));
  const std::u32string wanted = codePoints(label);
  for (const std::size_t start : {std::size_t{0}, behindGender(text)}) {
    const auto length = misreadLength(std::u32string_view(text).substr(start), wanted);
    if (!length) continue;
    block.replace(utf8(text.substr(0, start)).size(), utf8(text.substr(start, *length)).size(), label);
    return true;
  }
  return false;
}

}  // namespace

std::span<const std::string_view> labelsOf(SceneType scene) {
  const std::span<const std::string_view> all = labels;
  switch (scene) {
    case SceneType::idCard:
      return all;
    case SceneType::idCardFront:
      return all.first(portraitLabels);
    case SceneType::idCardBack:
      return all.subspan(portraitLabels);
    case SceneType::bankCard:
      break;
  }
  return {};
}

void repairLabels(Observations& observations, SceneType scene) {
  for (const std::string_view label : labelsOf(scene)) {
    const auto shows = [&](const Observation& block) { return contains(block.text, label); };
    if (std::ranges::any_of(observations, shows)) continue;
    for (Observation& block : observations)
      if (repairLabel(block.text, label)) break;
  }
}

}  // namespace pravik
