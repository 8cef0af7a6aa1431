#include "Reading/CardHolder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "Parsers/CardText.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

/// The syllables of Mandarin without tones; V or YU is typed for Ü.
constexpr std::string_view pinyinPattern =
    "^(?:[BPMF](?:A|AI|AN|ANG|AO|EI|EN|ENG|I|IAN|IAO|IE|IN|ING|O|OU|U)|ME|MIU"
    "|[DTNL](?:A|AI|AN|ANG|AO|E|EI|EN|ENG|I|IA|IAN|IANG|IAO|IE|IN|ING|IU|ONG|OU|U|UAN|UE|UI|UN|UO|V|VE)"
    "|(?:[GKH]|[ZCS]H?|R)(?:A|AI|AN|ANG|AO|E|EI|EN|ENG|I|ONG|OU|U|UA|UAI|UAN|UANG|UI|UN|UO)"
    "|[JQX](?:I|IA|IAN|IANG|IAO|IE|IN|ING|IONG|IU|U|UAN|UE|UN)"
    "|Y(?:A|AN|ANG|AO|E|I|IN|ING|ONG|OU|U|UAN|UE|UN)|W(?:A|AI|AN|ANG|EI|EN|ENG|O|U)"
    "|[LN]YUE?|A|AI|AN|ANG|AO|E|EN|ER|OU)+$";
constexpr std::string_view vowels = "AEIOUV";

bool isPinyin(std::string_view word) {
  return RegexHelper::matches(pinyinPattern, word);
}

bool isVowel(char letter) {
  return vowels.find(letter) != std::string_view::npos;
}

/// What a letter of a word must have been where no Chinese name has it, else the letter. A T at the end stays: names in
/// Cantonese end in one.
char embossedLetter(std::string_view word, std::size_t index) {
  const bool behindConsonant = index > 0 && !isVowel(word[index - 1]);
  const bool beforeVowel = index + 1 < word.size() && isVowel(word[index + 1]);
  switch (word[index]) {
    case 'T':
      return behindConsonant && index + 1 < word.size() ? 'I' : 'T';
    case 'O':
    case 'D':
      return beforeVowel ? 'D' : 'O';
    default:
      return word[index];
  }
}

/// The word as pinyin with one letter mended; itself when none or several could be.
std::string mendedWord(std::string_view word) {
  std::string mended(word);
  for (std::size_t i = 0; i < word.size(); ++i) {
    std::string candidate(word);
    candidate[i] = embossedLetter(word, i);
    if (candidate == word || !isPinyin(candidate)) continue;
    if (mended != word) return std::string(word);
    mended = std::move(candidate);
  }
  return mended;
}

/// What cards print in capitals near the name. Where a part of it is hidden, or a letter misread, no word gives it
/// away.
constexpr std::array<std::string_view, 6> printedPhrases{"VALIDTHRU",   "VALIDFROM", "GOODTHRU",
                                                         "MEMBERSINCE", "MONTHYEAR", "AUTHORIZEDSIGNATURE"};
constexpr std::size_t shortestPiece = 4;
/// A piece may have one letter wrong in so many.
constexpr std::size_t lettersAWrongOne = 6;

/// The fewest letters to change, add or leave out so that a word stands in a phrase (Sellers, "The theory and
/// computation of evolutionary distances", 1980).
std::size_t changesToStandIn(std::string_view phrase, std::string_view word) {
  std::vector<std::size_t> row(phrase.size() + 1);
  for (std::size_t i = 0; i < word.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < phrase.size(); ++j) {
      const std::size_t changed = diagonal + (word[i] == phrase[j] ? 0 : 1);
      diagonal = std::exchange(row[j + 1], std::min({changed, row[j] + 1, row[j + 1] + 1}));
    }
  }
  return *std::ranges::min_element(row);
}

/// Two to four characters behind the label, up to a space or the end of the line. The commonest surnames of one and of
/// two characters keep out what else follows the label ("持卡人签名", "姓名拼音"), but for what a card is called
/// ("白金卡").
constexpr std::string_view holderPattern =
    "(?:持卡人|姓名)[ :]*((?!\\p{Han}*卡)"
    "(?=[王李张刘陈杨黄赵吴周徐孙马朱胡郭何林高罗郑梁谢宋唐许韩邓冯曹彭曾肖田董潘袁蔡蒋余杜叶程魏苏吕丁卢姚沈钟姜崔谭陆"
    "范汪廖石金韦贾夏付方邹熊白孟秦邱侯江尹薛闫段雷龙黎史陶贺毛郝顾龚邵万覃武钱戴严莫孔]|欧阳|上官|司徒|诸葛|司马)"
    "\\p{Han}{2,4})(?= |$)";

}  // namespace

std::string mendedHolder(std::string_view name) {
  const std::vector<std::string_view> split = splitAtWhitespace(name);
  std::vector<std::string> words(split.begin(), split.end());
  if (std::ranges::count_if(words, isPinyin) + 1 != std::ssize(words)) return std::string(name);
  const auto word = std::ranges::find_if_not(words, isPinyin);
  *word = mendedWord(*word);
  return joined(words, " ");
}

bool isSpeltInPinyin(std::string_view name) {
  return std::ranges::all_of(splitAtWhitespace(name), isPinyin);
}

bool isPrintedPhrase(std::string_view name) {
  const std::string letters = removingAll(name, " ");
  return letters.size() >= shortestPiece && std::ranges::any_of(printedPhrases, [&](std::string_view phrase) {
           return changesToStandIn(phrase, letters) <= letters.size() / lettersAWrongOne;
         });
}

std::optional<std::string> chineseHolder(const Observations& observations) {
  for (const std::string& line : cardText(observations).lineTexts)
    if (auto name = RegexHelper::captureGroup(1, holderPattern, line)) return name;
  return std::nullopt;
}

}  // namespace pravik
