#include "Parsers/BankName.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

/// What may be printed, and what it stands for: a bank's Chinese name, or a simplified character.
struct PrintedForm {
  std::string_view printed;
  std::string_view meaning;
};

constexpr std::array<PrintedForm, 30> traditionalToSimplified{{
    {"銀", "银"}, {"國", "国"}, {"農", "农"}, {"業", "业"}, {"設", "设"}, {"構", "构"}, {"務", "务"}, {"發", "发"},
    {"東", "东"}, {"華", "华"}, {"開", "开"}, {"關", "关"}, {"點", "点"}, {"號", "号"}, {"卡", "卡"}, {"儲", "储"},
    {"蓄", "蓄"}, {"郵", "邮"}, {"政", "政"}, {"興", "兴"}, {"廣", "广"}, {"聯", "联"}, {"滙", "汇"}, {"豐", "丰"},
    {"實", "实"}, {"萬", "万"}, {"長", "长"}, {"還", "还"}, {"餘", "余"}, {"額", "额"},
}};

constexpr std::array<PrintedForm, 22> bankKeywords{{
    {"工商银行", "中国工商银行"},     {"建设银行", "中国建设银行"}, {"农业银行", "中国农业银行"},
    {"中国银行", "中国银行"},         {"交通银行", "交通银行"},     {"招商银行", "招商银行"},
    {"浦发银行", "上海浦东发展银行"}, {"中信银行", "中信银行"},     {"光大银行", "中国光大银行"},
    {"华夏银行", "华夏银行"},         {"民生银行", "中国民生银行"}, {"广发银行", "广发银行"},
    {"兴业银行", "兴业银行"},         {"平安银行", "平安银行"},     {"邮储银行", "中国邮政储蓄银行"},
    {"北京银行", "北京银行"},         {"上海银行", "上海银行"},     {"宁波银行", "宁波银行"},
    {"农村商业", "农村商业银行"},     {"农商行", "农村商业银行"},   {"邮政储蓄", "中国邮政储蓄银行"},
    {"浦东发展", "上海浦东发展银行"},
}};

constexpr std::array<PrintedForm, 18> bankDomains{{
    {"icbc.com.cn", "中国工商银行"},
    {"ccb.com", "中国建设银行"},
    {"abchina.com", "中国农业银行"},
    {"boc.cn", "中国银行"},
    {"bankcomm.com", "交通银行"},
    {"cmbchina.com", "招商银行"},
    {"spdb.com.cn", "上海浦东发展银行"},
    {"spdbccc.com.cn", "上海浦东发展银行"},
    {"citicbank.com", "中信银行"},
    {"cebbank.com", "中国光大银行"},
    {"hxb.com.cn", "华夏银行"},
    {"cmbc.com.cn", "中国民生银行"},
    {"cgbchina.com.cn", "广发银行"},
    {"cib.com.cn", "兴业银行"},
    {"bank.pingan.com", "平安银行"},
    {"psbc.com", "中国邮政储蓄银行"},
    {"bankofbeijing.com.cn", "北京银行"},
    {"bankofshanghai.com", "上海银行"},
}};

/// The last row catches a name that is cut off at a line end.
constexpr std::array<PrintedForm, 28> bankEnglishFullNames{{
    {"INDUSTRIAL AND COMMERCIAL BANK OF CHINA", "中国工商银行"},
    {"CHINA CONSTRUCTION BANK", "中国建设银行"},
    {"AGRICULTURAL BANK OF CHINA", "中国农业银行"},
    {"BANK OF CHINA", "中国银行"},
    {"BANK OF COMMUNICATIONS", "交通银行"},
    {"CHINA MERCHANTS BANK", "招商银行"},
    {"SHANGHAI PUDONG DEVELOPMENT BANK", "上海浦东发展银行"},
    {"CHINA CITIC BANK", "中信银行"},
    {"CHINA EVERBRIGHT BANK", "中国光大银行"},
    {"HUAXIA BANK", "华夏银行"},
    {"CHINA MINSHENG BANK", "中国民生银行"},
    {"CHINA GUANGFA BANK", "广发银行"},
    {"INDUSTRIAL BANK", "兴业银行"},
    {"PING AN BANK", "平安银行"},
    {"POSTAL SAVINGS BANK OF CHINA", "中国邮政储蓄银行"},
    {"CHINA POSTAL SAVINGS BANK", "中国邮政储蓄银行"},
    {"BANK OF BEIJING", "北京银行"},
    {"BANK OF SHANGHAI", "上海银行"},
    {"BANK OF NINGBO", "宁波银行"},
    {"BANK OF NANJING", "南京银行"},
    {"CHINA ZHESHANG BANK", "浙商银行"},
    {"BOHAI BANK", "渤海银行"},
    {"HENGFENG BANK", "恒丰银行"},
    {"HSBC", "汇丰银行"},
    {"STANDARD CHARTERED", "渣打银行"},
    {"CITIBANK", "花旗银行"},
    {"JPMORGAN CHASE", "摩根大通"},
    {"CHINA CONSTRUCTION", "中国建设银行"},
}};

constexpr std::array<PrintedForm, 14> bankAbbreviations{{
    {"ICBC", "中国工商银行"},
    {"CCB", "中国建设银行"},
    {"ABC", "中国农业银行"},
    {"BOC", "中国银行"},
    {"BOCOM", "交通银行"},
    {"CMB", "招商银行"},
    {"SPDB", "上海浦东发展银行"},
    {"CITIC", "中信银行"},
    {"CEB", "中国光大银行"},
    {"CMBC", "中国民生银行"},
    {"CGB", "广发银行"},
    {"CIB", "兴业银行"},
    {"PAB", "平安银行"},
    {"PSBC", "中国邮政储蓄银行"},
}};

/// The words of an English name that tell its bank apart; BANK, CHINA and OF are in almost all of them.
struct TellingWords {
  std::string_view bank;
  std::array<std::string_view, 2> words;
};

constexpr std::array<TellingWords, 13> tellingWords{{
    {"中国建设银行", {"CONSTRUCTION"}},
    {"中国工商银行", {"INDUSTRIAL", "COMMERCIAL"}},
    {"中国农业银行", {"AGRICULTURAL"}},
    {"招商银行", {"MERCHANTS"}},
    {"交通银行", {"COMMUNICATIONS"}},
    {"中信银行", {"CITIC"}},
    {"中国光大银行", {"EVERBRIGHT"}},
    {"中国民生银行", {"MINSHENG"}},
    {"上海浦东发展银行", {"PUDONG", "DEVELOPMENT"}},
    {"广发银行", {"GUANGFA"}},
    {"中国邮政储蓄银行", {"POSTAL", "SAVINGS"}},
    {"平安银行", {"PING", "AN"}},
    {"浙商银行", {"ZHESHANG"}},
}};

constexpr std::string_view chineseNamePattern = R"([\u4e00-\u9fa5]{2,10}银行)";
/// The banks of the countryside that do not call themselves one.
constexpr std::string_view creditCooperativePattern = R"([\u4e00-\u9fa5]{2,10}信用(?:合作)?(?:联社|社(?:联合社)?))";
/// They end in the word for bank and name none.
constexpr std::array<std::string_view, 4> namelessBanks{"发卡银行", "开户银行", "本银行", "商业银行"};
constexpr std::string_view wordPattern = "[A-Z]+";

std::optional<std::string> firstContained(std::string_view text, std::span<const PrintedForm> rows) {
  const auto row = std::ranges::find_if(rows, [text](const PrintedForm& r) { return contains(text, r.printed); });
  if (row == rows.end()) return std::nullopt;
  return std::string(row->meaning);
}

std::optional<std::string> printedChineseName(std::string_view text) {
  for (std::string& name : RegexHelper::allMatches(chineseNamePattern, text)) {
    const auto isEnd = [&](std::string_view end) { return name.ends_with(end); };
    if (std::ranges::none_of(namelessBanks, isEnd)) return std::move(name);
  }
  return std::nullopt;
}

/// The longest, so that a name within another name does not win over it. Spaces do not count, since a recogniser loses
/// them between words in narrow letters, nor do line ends, over which a long name goes on.
std::optional<std::string> longestEnglishName(std::string_view upperText) {
  const std::string text = removingAll(removingAll(upperText, " "), "\n");
  const PrintedForm* longest = nullptr;
  for (const PrintedForm& row : bankEnglishFullNames) {
    if (longest != nullptr && row.printed.size() <= longest->printed.size()) continue;
    if (contains(text, removingAll(row.printed, " "))) longest = &row;
  }
  if (longest == nullptr) return std::nullopt;
  return std::string(longest->meaning);
}

std::set<std::string> upperCaseWords(std::string_view text) {
  const std::vector<std::string> words = RegexHelper::allMatches(wordPattern, text);
  return {words.begin(), words.end()};
}

std::optional<std::string> bankOfAbbreviation(const std::set<std::string>& words) {
  for (const PrintedForm& row : bankAbbreviations)
    if (words.contains(std::string(row.printed))) return std::string(row.meaning);
  return std::nullopt;
}

}  // namespace

std::string normalizeTraditional(std::string_view text) {
  std::string result(text);
  for (const PrintedForm& row : traditionalToSimplified)
    if (row.printed != row.meaning && contains(result, row.printed))
      result = replacingAll(result, row.printed, row.meaning);
  return result;
}

std::optional<std::string> extractBankName(std::string_view text) {
  const std::string simplified = normalizeTraditional(text);
  if (auto bank = firstContained(simplified, bankKeywords)) return bank;
  if (auto bank = printedChineseName(simplified)) return bank;
  if (auto bank = firstContained(lowercased(text), bankDomains)) return bank;
  if (auto bank = longestEnglishName(uppercased(text))) return bank;
  const std::set<std::string> words = upperCaseWords(text);
  if (auto bank = bankOfAbbreviation(words)) return bank;
  if (auto bank = heuristicMatchByWords(words)) return bank;
  return RegexHelper::firstMatch(creditCooperativePattern, simplified);
}

bool isBankWord(std::string_view word) {
  return std::ranges::find(bankAbbreviations, word, &PrintedForm::printed) != bankAbbreviations.end() ||
         std::ranges::find(bankEnglishFullNames, word, &PrintedForm::printed) != bankEnglishFullNames.end();
}

bool isInEnglishBankName(std::string_view words) {
  const auto spaced = [](std::string_view text) { return ' ' + std::string(text) + ' '; };
  return std::ranges::any_of(bankEnglishFullNames,
                             [&](const PrintedForm& row) { return contains(spaced(row.printed), spaced(words)); });
}

const std::set<std::string_view>& chineseBankNames() {
  static const auto names = [] {
    std::set<std::string_view> all;
    for (const PrintedForm& row : bankKeywords) all.insert({row.printed, row.meaning});
    for (const PrintedForm& row : bankEnglishFullNames) all.insert(row.meaning);
    std::erase_if(all, [](std::string_view name) { return !name.ends_with("银行"); });
    return all;
  }();
  return names;
}

std::optional<std::string> heuristicMatchByWords(const std::set<std::string>& words) {
  std::optional<std::string> bank;
  std::size_t mostWords = 0;
  for (const TellingWords& row : tellingWords) {
    const auto present = [&](std::string_view word) { return word.empty() || words.contains(std::string(word)); };
    if (!std::ranges::all_of(row.words, present)) continue;
    const std::size_t count = row.words[1].empty() ? 1 : 2;
    if (count < mostWords) continue;
    // As many words of two banks tell neither apart.
    bank = count > mostWords ? std::optional(std::string(row.bank)) : std::nullopt;
    mostWords = count;
  }
  return bank;
}

}  // namespace pravik
