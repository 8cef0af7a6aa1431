#include <algorithm>

#include "Parsers/BINHints.h"
#include "Parsers/CardNumber.h"
#include "Parsers/CardNumberFusion.h"
#include "Parsers/CardText.h"
#include "Parsers/LuhnRepair.h"
#include "fuzz/FuzzInput.h"

using namespace pravik;

namespace {

void requireSoundRepairs(const std::string& number, std::string_view hint) {
  const auto sound = [](const std::string& digits) { return isValidCardNumber(digits) && luhnCheck(digits); };
  if (const auto fixed = luhnSingleDigitFix(number, hint)) {
    fuzz::require(sound(*fixed), "a repaired number is sound");
    const auto [a, b] = std::ranges::mismatch(number, *fixed);
    fuzz::require(a != number.end() && std::equal(a + 1, number.end(), b + 1, fixed->end()), "one digit is repaired");
  }
  if (const auto shorter = luhnDigitRemovalFix(number, hint))
    fuzz::require(sound(*shorter) && shorter->size() == 16 && number.size() == 17, "one digit is removed");
}

}  // namespace

// Readings, separated by empty lines, to the one number that they give together.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::logEverything();
  std::vector<std::string> fragments;
  std::vector<std::string> hints;
  std::string_view rest = fuzz::asText(data, size);
  const std::size_t targetLength = 16 + rest.size() % 4;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find("\n\n"), rest.size());
    const Observations reading = fuzz::observationsIn(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 2, rest.size()));
    const auto more = extractCardNumberFragments(reading);
    for (const std::string& fragment : more)
      fuzz::require(4 <= fragment.size() && fuzz::isDigits(fragment, std::min(fragment.size(), std::size_t{19})),
                    "a fragment has 4 to 19 digits");
    fragments.insert(fragments.end(), more.begin(), more.end());
    const auto moreHints = extractBINHints(bankCardRows(reading));
    hints.insert(hints.end(), moreHints.begin(), moreHints.end());
  }
  for (const std::string& fragment : fragments) requireSoundRepairs(fragment, hints.empty() ? "" : hints.front());
  for (const std::size_t length : {fusedCardNumberLength, targetLength}) {
    const auto number = fuseCardNumber(fragments, hints, length);
    fuzz::require(!number || (number->size() == length && isValidCardNumber(*number) && luhnCheck(*number)),
                  "a fused number is sound");
  }
  return 0;
}
