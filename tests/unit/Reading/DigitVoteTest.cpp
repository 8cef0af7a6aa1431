#include "Reading/DigitVote.h"

#include <gtest/gtest.h>

#include "support/Fakes.h"

namespace pravik {
namespace {

std::vector<SeenDigits> looksAt(const std::vector<std::string>& texts) {
  std::vector<SeenDigits> looks;
  for (const std::string& text : texts) looks.push_back(test::seenRow(text));
  return looks;
}

TEST(DigitVote, TakesWhatMostLooksReadAndTrustsItWhenItPassesAsACardNumber) {
  struct Case {
    const char* what;
    std::vector<std::string> looks;
    const char* digits;
    bool isSound;
  };
  const std::vector<Case> cases{
      {"all agree", {"6222 0212 3456 7894", "6222 0212 3456 7894"}, "6222021234567894", true},
      {"all agree on what fails Luhn", {"6222 0212 3456 7890", "6222 0212 3456 7890"}, "6222021234567890", false},
      {"all agree on no card's beginning", {"1222 0212 3456 7895", "1222 0212 3456 7895"}, "1222021234567895", false},
      {"one misreads a digit",
       {"6222 0212 3456 7894", "6222 0212 8456 7894", "6222 0212 3456 7894"},
       "6222021234567894",
       true},
      {"one misses a digit, one makes one up",
       {"6222 0_12 3456 7894", "6222 0212 3456 7894", "622250212 3456 7894", "6222 0212 3456 7894"},
       "6222021234567894",
       true},
      {"most misread a digit that one look reads: Luhn does not overrule them",
       {"6222 0212 8456 7894", "6222 0212 8456 7894", "6222 0212 8456 7894", "6222 0212 3456 7894"},
       "6222021284567894",
       false},
      {"half misread a digit: Luhn decides", {"6222 0212 8456 7894", "6222 0212 3456 7894"}, "6222021234567894", true},
      {"a number in the groups of none", {"622 20212 3456 7894", "622 20212 3456 7894"}, "6222021234567894", false},
      {"less than half of the looks read one digit: Luhn would have told a wrong one",
       {"6222 0212 3456 7894", "6222 0212 3156 7894", "6222 0212 3956 7894", "6222 0212 3456 7894",
        "6222 0212 3856 7894"},
       "6222021234567894",
       true},
      {"the same with two digits",
       {"6222 0212 3456 7894", "6222 0212 3156 1894", "6222 0212 3956 9894", "6222 0212 3456 7894",
        "6222 0212 3856 8894"},
       "6222021234567894",
       false},
      {"the same with one digit of an uncommon length",
       {"6222 0212 3456 789350", "6222 0212 3156 789350", "6222 0212 3956 789350", "6222 0212 3456 789350",
        "6222 0212 3856 789350"},
       "622202123456789350",
       false},
      {"nineteen in one run", {"6222021234567890128", "6222021234567890128"}, "6222021234567890128", true},
      {"seventeen digits where the network has sixteen",
       {"41111111111111113", "41111111111111113"},
       "41111111111111113",
       false},
      {"nothing", {"", ""}, "", false},
  };
  for (const Case& c : cases) {
    const VotedDigits voted = vote(looksAt(c.looks));
    EXPECT_EQ(voted.digits, c.digits) << c.what;
    EXPECT_EQ(voted.isSound, c.isSound) << c.what;
  }
  EXPECT_TRUE(vote({}).digits.empty());
}

TEST(DigitVote, DisputedDigitsGoToTheGreaterSumOfProbabilities) {
  auto looks = looksAt({"6222 0212 3456 7894", "6222 0212 3456 7894", "6222 0212 8456 7894", "6222 0212 8456 7894"});
  for (const std::size_t unsure : {2U, 3U}) looks[unsure][8].probabilities[8] = 0.3F;
  EXPECT_EQ(vote(looks).digits, "6222021234567894");
  EXPECT_TRUE(vote(looks).isSound);
  EXPECT_DOUBLE_EQ(vote(looks).confidence(), 0.5);
}

TEST(DigitVote, TellsHowFarLooksBearANumberOut) {
  const auto looks = looksAt({"6222 0212 3456 7894", "6222 0212 8456 7894", "6222 0_12 3456 7894"});
  EXPECT_DOUBLE_EQ(supportFor("6222021234567894", looks), 2.0 / 3);
  EXPECT_DOUBLE_EQ(supportFor("6222021284567894", looks), 1.0 / 3);
  EXPECT_DOUBLE_EQ(supportFor("6222021234567897", looks), 0);
  EXPECT_DOUBLE_EQ(supportFor("6222021234567894", {}), 0);
  EXPECT_DOUBLE_EQ(supportFor("6222021234567", looks), 0) << "the looks see more digits";
}

}  // namespace
}  // namespace pravik
