#include "Parsers/BankCardDetails.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "Parsers/BankName.h"
#include "Utils/RegexHelper.h"
#include "Utils/Text.h"

namespace pravik {

namespace {

using CardType = BankCardInfo::CardType;

constexpr std::array<std::string_view, 3> debitWords{"借记卡", "储蓄卡", "debit"};
/// The wording beside a signature panel marks a credit card.
constexpr std::array<std::string_view, 6> creditWords{"信用卡",       "贷记卡", "credit", "not valid unless signed",
                                                      "签名方为有效", "须签名"};
/// They name a bank and not a type of card; "credit" stands beside the network's name on others.
constexpr std::string_view creditBankPattern = R"(credit\s*(?:co-?operative|union(?!\s*pay)))";
constexpr std::array<std::string_view, 2> prepaidWords{"预付卡", "礼品卡"};
constexpr std::size_t debitNumberLength = 19;

constexpr std::string_view namePattern = R"([A-Z]{2,15} [A-Z]{2,15}(?:\s[A-Z]{1,15})?)";
constexpr std::array<std::string_view, 53> nameExcludeWords{
    "BANK",      "CHINA",    "CONSTRUCTION", "AGRICULTURAL", "INDUSTRIAL", "POSTAL",     "COMMERCIAL", "COMMUNICATIONS",
    "MERCHANTS", "MINSHENG", "GUANGFA",      "PING",         "CITIC",      "EVERBRIGHT", "HUAXIA",     "BOCOM",
    "SPDB",      "SHANGHAI", "PUDONG",       "DEVELOPMENT",  "UNIONPAY",   "VISA",       "MASTERCARD", "JCB",
    "AMEX",      "GOLD",     "PLATINUM",     "CREDIT",       "DEBIT",      "CARD",       "CLASSIC",    "ELITE",
    "VALID",     "THRU",     "FROM",         "MONTH",        "YEAR",       "EXPIRES",    "EXP",        "AUTHORIZED",
    "SIGNATURE", "SIGNED",   "UNLESS",       "NOT",          "CALL",       "HOURS",      "SERVICE",    "CONCIERGE",
    "OVERSEAS",  "SAVINGS",  "WEALTH",       "MANAGEMENT",   "FAMILY"};

/// What else the form has printed, and no name is made of: beside the dates, about the card's use, and of its kind.
constexpr std::array<std::string_view, 34> formWords{
    "MEMBER",   "SINCE",   "EXPIRY",   "DATE",      "DATES",      "QUICK",   "PASS",     "QUICKPASS", "UNION",
    "PAY",      "MASTER",  "AMERICAN", "EXPRESS",   "DINERS",     "CLUB",    "DISCOVER", "WORLD",     "TITANIUM",
    "INFINITE", "DIAMOND", "BUSINESS", "CORPORATE", "STANDARD",   "PREPAID", "GIFT",     "TRAVEL",    "ELECTRONIC",
    "USE",      "ONLY",    "CASH",     "ATM",       "CARDHOLDER", "NAME",    "HOTLINE"};
constexpr std::string_view vowels = "AEIOUVY";

bool isWordOfTheCard(std::string_view word) {
  return std::ranges::find(nameExcludeWords, word) != nameExcludeWords.end() ||
         std::ranges::find(formWords, word) != formWords.end() || isBankWord(word);
}

/// Letters that stand for a region have none ("HN GD"); a name has one, be it the V that is typed for Ü.
bool hasVowel(std::string_view word) {
  return word.find_first_of(vowels) != std::string_view::npos;
}

bool isName(std::string_view words) {
  const auto split = splitAtWhitespace(words);
  return std::ranges::none_of(split, isWordOfTheCard) && std::ranges::any_of(split, hasVowel) &&
         !isInEnglishBankName(words);
}

}  // namespace

std::optional<CardType> extractCardType(std::string_view text, std::string_view cardNumber) {
  const std::string lower = RegexHelper::replace(creditBankPattern, lowercased(text), "");
  if (containsAny(lower, debitWords)) return CardType::debit;
  if (containsAny(lower, creditWords)) return CardType::credit;
  if (asciiDigits(cardNumber).size() == debitNumberLength) return CardType::debit;
  if (containsAny(lower, prepaidWords)) return CardType::prepaid;
  return std::nullopt;
}

std::optional<std::string> extractCardholderName(std::string_view text) {
  // Line by line: a name stands on one, and across a line end the pattern would take its last word from the next
  // block, or the first word of the name away from it.
  for (const std::string_view line : splitAtLineFeeds(text))
    for (const std::string& match : RegexHelper::allMatches(namePattern, line))
      if (isName(match)) return match;
  return std::nullopt;
}

}  // namespace pravik
