#include "Reading/DigitVote.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "Parsers/CardNumber.h"

namespace pravik {
namespace {

/// Luhn passes one wrong number in ten, so the looks must agree besides: on every digit at least half of them, and on
/// all digits together. Fewer may agree on a single digit, since Luhn finds every single error, when they agree well
/// on the others: it passes digits that changed places two apart. With an uncommon length nearly all must agree.
constexpr double leastAgreement = 0.5;
constexpr double leastAgreementOfOne = 0.25;
constexpr double leastAgreementBesideOne = 0.6;
constexpr double leastAgreementOfUncommonLength = 0.85;
constexpr double leastMeanAgreement = 0.75;
/// A digit is disputed when another one, or nothing, has at least this share of its support.
constexpr double disputedShare = 0.5;
/// Costs of an alignment: digits stand at most so many digit widths apart in two looks; and leaving one out.
constexpr double farthestMatch = 0.7;
constexpr double gapCost = 0.75;
constexpr double otherDigitCost = 0.5;
/// Cards of these networks have no other length.
constexpr std::string_view alwaysSixteen = "345";
constexpr std::size_t shortestNumber = 16;
/// With so many disputed digits, one that makes the number pass Luhn is as likely chance.
constexpr std::size_t mostDisputes = 3;
/// Neighbours this many digit widths apart belong to two groups.
constexpr double groupGap = 1.6;
/// How cards print their numbers: where a group begins, behind so many digits.
constexpr std::array<std::array<std::size_t, 4>, 3> layouts{{{4, 8, 12, 16}, {6, 6, 6, 6}, {5, 9, 14, 14}}};

std::size_t likeliest(const std::array<float, 10>& probabilities) {
  return static_cast<std::size_t>(std::ranges::max_element(probabilities) - probabilities.begin());
}
char asCharacter(std::size_t digit) {
  return static_cast<char>('0' + digit);
}

/// The usual distance of neighbours; absent with fewer than two digits.
std::optional<double> pitchOf(const SeenDigits& look) {
  std::vector<double> gaps;
  for (std::size_t i = 1; i < look.size(); ++i) gaps.push_back(look[i].position - look[i - 1].position);
  if (gaps.empty()) return std::nullopt;
  const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
  std::ranges::nth_element(gaps, middle);
  return std::max(*middle, std::numeric_limits<double>::epsilon());
}

/// For each of `first` items its partner among `second`, or nothing, at the least cost (Needleman and Wunsch, "A
/// general method applicable to the search for similarities", 1970). `matchCost` tells what a pair costs.
template <class MatchCost>
std::vector<std::optional<std::size_t>> aligned(std::size_t first, std::size_t second, double gap,
                                                const MatchCost& matchCost) {
  const std::size_t columns = second + 1;
  std::vector<double> costs((first + 1) * columns);
  const auto at = [&](std::size_t i, std::size_t j) -> double& { return costs[i * columns + j]; };
  const auto matched = [&](std::size_t i, std::size_t j) { return at(i - 1, j - 1) + matchCost(i - 1, j - 1); };
  for (std::size_t i = 0; i <= first; ++i)
    for (std::size_t j = 0; j <= second; ++j)
      at(i, j) = i == 0 || j == 0 ? gap * static_cast<double>(i + j)
                                  : std::min({matched(i, j), at(i - 1, j) + gap, at(i, j - 1) + gap});
  std::vector<std::optional<std::size_t>> partners(first);
  for (std::size_t i = first, j = second; i > 0 && j > 0;) {
    if (at(i, j) == matched(i, j))
      partners[--i] = --j;
    else if (at(i, j) == at(i - 1, j) + gap)
      --i;
    else
      --j;
  }
  return partners;
}

/// A place of the row: the looks' summed probabilities, and how many of them read each digit.
struct Place {
  double position = 0;
  std::array<float, 10> probabilities{};
  std::array<int, 10> votes{};
  int seen = 0;
};

std::vector<Place> placesAlong(const SeenDigits& base, std::span<const SeenDigits> looks, double pitch) {
  std::vector<Place> places;
  for (const SeenDigit& digit : base) places.push_back({.position = digit.position, .probabilities = {}, .votes = {}});
  for (const SeenDigits& look : looks) {
    const auto matchCost = [&](std::size_t i, std::size_t j) {
      const double distance = std::abs(base[i].position - look[j].position) / pitch;
      if (distance > farthestMatch) return std::numeric_limits<double>::infinity();
      return distance + (likeliest(base[i].probabilities) == likeliest(look[j].probabilities) ? 0 : otherDigitCost);
    };
    const auto partners = aligned(base.size(), look.size(), gapCost, matchCost);
    for (std::size_t i = 0; i < places.size(); ++i) {
      const auto& partner = partners[i];
      if (!partner) continue;
      const auto& probabilities = look[*partner].probabilities;
      ++places[i].seen;
      ++places[i].votes[likeliest(probabilities)];
      std::ranges::transform(places[i].probabilities, probabilities, places[i].probabilities.begin(), std::plus{});
    }
  }
  return places;
}

/// The places along the look that fits all others best.
std::vector<Place> bestPlaces(std::span<const SeenDigits> looks) {
  std::vector<Place> best;
  double mostAgreeing = -1;
  for (const SeenDigits& base : looks) {
    const auto pitch = pitchOf(base);
    if (!pitch) continue;
    auto places = placesAlong(base, looks, *pitch);
    double agreeing = 0;
    for (const Place& place : places)
      agreeing += 2.0 * *std::ranges::max_element(place.votes) - static_cast<double>(looks.size());
    if (agreeing <= mostAgreeing) continue;
    mostAgreeing = agreeing;
    best = std::move(places);
  }
  return best;
}

/// How a place is read: a digit, or nothing there.
using Choice = std::optional<std::size_t>;

Choice mostSay(const Place& place, std::size_t looks) {
  return 2 * place.seen > static_cast<int>(looks) ? Choice(likeliest(place.probabilities)) : std::nullopt;
}

std::string textOf(const std::vector<Choice>& choices) {
  std::string digits;
  for (const Choice& digit : choices)
    if (digit) digits += asCharacter(*digit);
  return digits;
}

/// How else a place may be read by what the looks saw there.
std::vector<Choice> disputes(const Place& place, std::size_t looks) {
  const std::size_t first = likeliest(place.probabilities);
  const float support = place.probabilities[first];
  const auto unseen = static_cast<float>(static_cast<int>(looks) - place.seen);
  std::vector<Choice> choices;
  for (std::size_t digit = 0; digit < place.probabilities.size(); ++digit)
    if (digit != first && place.probabilities[digit] >= disputedShare * support) choices.emplace_back(digit);
  const bool isLeftOut = !mostSay(place, looks);
  if (isLeftOut && support >= disputedShare * unseen) choices.emplace_back(first);
  if (!isLeftOut && unseen >= disputedShare * support) choices.emplace_back(std::nullopt);
  return choices;
}

/// Whether the digits stand in groups as on a card; a gap between two may be unseen. A digit lost or made up moves the
/// gaps behind it.
bool standInGroups(const std::vector<double>& positions) {
  SeenDigits digits;
  for (const double position : positions) digits.push_back({.position = position, .probabilities = {}});
  const auto pitch = pitchOf(digits);
  if (!pitch) return false;
  std::vector<std::size_t> gaps;
  for (std::size_t i = 1; i < positions.size(); ++i)
    if (positions[i] - positions[i - 1] >= groupGap * *pitch) gaps.push_back(i);
  return std::ranges::any_of(layouts, [&](const auto& layout) {
    return std::ranges::all_of(gaps, [&](std::size_t gap) { return std::ranges::find(layout, gap) != layout.end(); });
  });
}

/// The choices with the one disputed digit changed that makes a card number of them; absent when there is none, or
/// several.
std::optional<std::vector<Choice>> decided(const std::vector<Choice>& choices, const std::vector<Place>& places,
                                           std::size_t looks) {
  std::optional<std::vector<Choice>> deciding;
  std::size_t disputed = 0;
  for (std::size_t i = 0; i < places.size(); ++i)
    for (const Choice& choice : disputes(places[i], looks)) {
      ++disputed;
      std::vector<Choice> changed = choices;
      changed[i] = choice;
      if (!passesAsCardNumber(textOf(changed))) continue;
      if (deciding) return std::nullopt;
      deciding = std::move(changed);
    }
  return disputed <= mostDisputes ? deciding : std::nullopt;
}

bool areTrusted(std::vector<double> agreement) {
  std::ranges::sort(agreement);
  const double mean = std::accumulate(agreement.begin(), agreement.end(), 0.0) / static_cast<double>(agreement.size());
  if (mean < leastMeanAgreement) return false;
  if (!isCommonLength(agreement.size())) return agreement.front() >= leastAgreementOfUncommonLength;
  if (agreement.front() >= leastAgreement) return true;
  return agreement.front() >= leastAgreementOfOne && agreement[1] >= leastAgreementBesideOne;
}

}  // namespace

double VotedDigits::confidence() const {
  return agreement.empty() ? 0 : *std::ranges::min_element(agreement);
}

double supportFor(std::string_view number, std::span<const SeenDigits> looks) {
  if (number.empty() || looks.empty()) return 0;
  std::vector<int> agreeing(number.size(), 0);
  int asLong = 0;
  for (const SeenDigits& look : looks) {
    const std::string read = digitsOf(look);
    if (read.size() <= number.size() + 1) ++asLong;
    const auto isSame = [&](std::size_t i, std::size_t j) { return number[i] == read[j]; };
    const auto partners =
        aligned(number.size(), read.size(), 1, [&](std::size_t i, std::size_t j) { return isSame(i, j) ? 0.0 : 1.0; });
    for (std::size_t i = 0; i < number.size(); ++i)
      if (const auto& partner = partners[i]; partner && isSame(i, *partner)) ++agreeing[i];
  }
  return static_cast<double>(std::min(asLong, *std::ranges::min_element(agreeing))) / static_cast<double>(looks.size());
}

std::string digitsOf(const SeenDigits& look) {
  std::string digits;
  for (const SeenDigit& digit : look) digits += asCharacter(likeliest(digit.probabilities));
  return digits;
}

bool isCommonLength(std::size_t digits) {
  return digits == 16 || digits == 19;
}

bool passesAsCardNumber(std::string_view digits) {
  if (!isValidCardNumber(digits) || !luhnCheck(digits)) return false;
  return digits.size() == shortestNumber || alwaysSixteen.find(digits.front()) == std::string_view::npos;
}

VotedDigits vote(std::span<const SeenDigits> looks) {
  const std::vector<Place> places = bestPlaces(looks);
  std::vector<Choice> choices(places.size());
  std::ranges::transform(places, choices.begin(), [&](const Place& place) { return mostSay(place, looks.size()); });
  if (!passesAsCardNumber(textOf(choices)))
    if (auto changed = decided(choices, places, looks.size())) choices = *std::move(changed);

  VotedDigits voted{.digits = textOf(choices), .agreement = {}, .positions = {}};
  for (std::size_t i = 0; i < places.size(); ++i) {
    const Choice& choice = choices[i];
    if (!choice) continue;
    voted.positions.push_back(places[i].position);
    voted.agreement.push_back(static_cast<double>(places[i].votes[*choice]) / static_cast<double>(looks.size()));
  }
  if (!passesAsCardNumber(voted.digits)) return voted;
  voted.isSound = areTrusted(voted.agreement) && standInGroups(voted.positions);
  return voted;
}

}  // namespace pravik
