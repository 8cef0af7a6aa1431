#include "Reading/PostCorrection.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Reading/BankNameRepair.h"
#include "Reading/CorrectionRules.h"
#include "Utils/ChineseText.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// The characters from ！ to ～ are those of ASCII, as wide as Chinese ones.
constexpr char32_t firstFullWidth = U'！';
constexpr char32_t lastFullWidth = U'～';
constexpr char32_t fullWidthOffset = U'！' - U'!';
/// Not a mark on any card, but how an embossed 1 is read: the parser takes it for that.
constexpr char32_t misreadOne = U'！';
constexpr char32_t fullWidthSpace = U'\u3000';

/// A recogniser that sees wide-set print puts spaces where a Chinese text has none. In front of a label a space parts
/// it from the value before.
constexpr std::string_view spacePattern =
    R"((?<=\p{Han}) +(?=\p{Han})(?!姓名|性别|民族|出生|住址|公民身份|签发机关|有效期))";

/// The digits that letters are misread for.
struct LetterForDigit {
  char letter;
  char digit;
};
constexpr std::array<LetterForDigit, 3> lettersForDigits{{{'O', '0'}, {'l', '1'}, {'I', '1'}}};

/// What the check character of a citizen number is read as, behind the 17 digits.
constexpr std::string_view checkCharacterPattern = R"((?<!\d)(\d(?: ?\d){16} ?)[x×]\s*\z)";

/// No place's name ends so: a blurred "县".
constexpr std::string_view misreadCounty = "具公安", county = "县公安";

char32_t narrow(char32_t point) {
  if (point == fullWidthSpace) return U' ';
  const bool isFullWidth = firstFullWidth <= point && point <= lastFullWidth && point != misreadOne;
  return isFullWidth ? point - fullWidthOffset : point;
}

std::string withAsciiForms(std::string_view text) {
  std::u32string points = codePoints(text);
  std::ranges::transform(points, points.begin(), narrow);
  return utf8(points);
}

std::string withoutSpacesBetweenIdeographs(std::string_view text) {
  return RegexHelper::replace(spacePattern, text, "");
}

bool isLetter(char c) {
  return ('A' <= c && c <= 'Z') || ('a' <= c && c <= 'z');
}
bool isReadForDigit(char c) {
  return std::ranges::find(lettersForDigits, c, &LetterForDigit::letter) != lettersForDigits.end();
}

bool isMostlyDigits(std::string_view text) {
  const std::u32string points = codePoints(text);
  const auto spaces = static_cast<std::size_t>(std::ranges::count(points, U' '));
  return 2 * asciiDigits(text).size() > points.size() - spaces;
}

/// Letters that touch a digit on so many sides, and are no part of a word, become digits.
std::string withDigitsForLetters(std::string text, int sides) {
  if (!isMostlyDigits(text)) return text;
  for (auto start = text.begin(); start != text.end();) {
    const auto run = std::find_if(start, text.end(), isLetter);
    const auto end = std::find_if_not(run, text.end(), isLetter);
    const int digitsBeside =
        (run != text.begin() && isAsciiDigit(*(run - 1)) ? 1 : 0) + (end != text.end() && isAsciiDigit(*end) ? 1 : 0);
    if (digitsBeside >= sides && std::all_of(run, end, isReadForDigit))
      std::transform(run, end, run,
                     [](char c) { return std::ranges::find(lettersForDigits, c, &LetterForDigit::letter)->digit; });
    start = end;
  }
  return text;
}

/// In a word of capitals the digits that look like letters become these. One letter and a digit make no word, nor do
/// letters that are all misread for digits themselves.
std::string withLettersForDigits(std::string text) {
  if (isMostlyDigits(text)) return text;
  const auto isCapital = [](char c) { return 'A' <= c && c <= 'Z'; };
  const auto letter = [](char c) { return c == '0' ? 'O' : c == '1' || c == 'l' ? 'I' : c; };
  for (auto start = text.begin(); start != text.end();) {
    const auto word = std::find_if(start, text.end(), [](char c) { return c != ' '; });
    const auto end = std::find(word, text.end(), ' ');
    const auto capitals = std::count_if(word, end, isCapital);
    const bool isWord = capitals >= 2 && 2 * capitals > end - word &&
                        std::all_of(word, end, [&](char c) { return isCapital(letter(c)); }) &&
                        std::any_of(word, end, [&](char c) { return isCapital(c) && !isReadForDigit(c); });
    if (isWord) std::transform(word, end, word, letter);
    start = end;
  }
  return text;
}

std::string withCapitalCheckCharacter(std::string_view text) {
  return RegexHelper::replace(checkCharacterPattern, text, "$1X");
}

/// How text is written, whatever it says. Labels are known by their simplified form, and "．" is a dot only until it
/// is a full stop.
constexpr std::array writingRules{withSimplifiedCharacters, withMiddleDots, withAsciiForms,
                                  withoutSpacesBetweenIdeographs};

/// On a bank card a letter at the end of a group may be the edge of the card or of a picture, and what follows the
/// groups of digits tries letters too.
int sidesOfLettersForDigits(SceneType scene) {
  return scene == SceneType::bankCard ? 2 : 1;
}

bool isALabel(std::string_view text, SceneType scene) {
  const std::string compact = removingAll(text, " ");
  return std::ranges::find(labelsOf(scene), compact) != labelsOf(scene).end();
}

void dropLabels(IDCardFrontInfo& info) {
  for (std::string* field : {&info.name, &info.ethnicity, &info.address})
    if (isALabel(*field, SceneType::idCardFront)) field->clear();
}

/// What stands below an office's label when the office was not read is the validity with its label.
void dropLabels(IDCardBackInfo& info) {
  const auto begins = [&](std::string_view label) { return info.issuingAuthority.starts_with(label); };
  if (std::ranges::any_of(labelsOf(SceneType::idCardBack), begins)) info.issuingAuthority.clear();
}

}  // namespace

Observations postCorrected(Observations observations, SceneType scene) {
  for (Observation& block : observations)
    for (const auto& rule : writingRules) block.text = rule(block.text);
  observations = withWordsJoined(std::move(observations));
  for (Observation& block : observations)
    block.text = withCapitalCheckCharacter(withDigitsForLetters(std::move(block.text), sidesOfLettersForDigits(scene)));
  if (scene == SceneType::bankCard) {
    for (Observation& block : observations) block.text = withLettersForDigits(std::move(block.text));
    repairBankName(observations);
  }
  if (scene == SceneType::idCardBack)
    for (Observation& block : observations) block.text = RegexHelper::replace(misreadCounty, block.text, county);
  repairLabels(observations, scene);
  return withContinuedValues(std::move(observations), scene);
}

Record withoutLabels(Record record) {
  if (auto* front = std::get_if<IDCardFrontInfo>(&record)) dropLabels(*front);
  if (auto* back = std::get_if<IDCardBackInfo>(&record)) dropLabels(*back);
  return record;
}

}  // namespace pravik
