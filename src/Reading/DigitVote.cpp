#include "Reading/DigitVote.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <optional>

#include "Parsers/CardNumber.h"

namespace pravik {
namespace {

/// Luhn passes one wrong number in ten, so the looks must agree besides: on every digit at least so many of them, and
/// on all digits together.
constexpr double leastAgreement = 0.5;
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
/// No card prints a shorter group, but for the last.
constexpr std::size_t shortestGroup = 4;
constexpr std::size_t shortestLastGroup = 3;

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

/// For each digit of `base` the matching one of `other`, or nothing, at the least cost.
std::vector<const SeenDigit*> aligned(const SeenDigits& base, const SeenDigits& other, double pitch) {
  const std::size_t columns = other.size() + 1;
  std::vector<double> cost((base.size() + 1) * columns);
  const auto at = [&](std::size_t i, std::size_t j) -> double& { return cost[i * columns + j]; };
  const auto matchCost = [&](std::size_t i, std::size_t j) {
    const double distance = std::abs(base[i].position - other[j].position) / pitch;
    if (distance > farthestMatch) return std::numeric_limits<double>::infinity();
    const bool same = likeliest(base[i].probabilities) == likeliest(other[j].probabilities);
    return distance + (same ? 0 : otherDigitCost);
  };
  for (std::size_t i = 0; i <= base.size(); ++i)
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        at(i, j) = gapCost * static_cast<double>(i + j);
        continue;
      }
      at(i, j) = std::min({at(i - 1, j - 1) + matchCost(i - 1, j - 1), at(i - 1, j) + gapCost, at(i, j - 1) + gapCost});
    }
  std::vector<const SeenDigit*> matches(base.size(), nullptr);
  for (std::size_t i = base.size(), j = other.size(); i > 0 && j > 0;) {
    if (at(i, j) == at(i - 1, j) + gapCost)
      --i;
    else if (at(i, j) == at(i, j - 1) + gapCost)
      --j;
    else
      matches[--i] = &other[--j];
  }
  return matches;
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
    const auto matches = aligned(base, look, pitch);
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (!matches[i]) continue;
      ++places[i].seen;
      ++places[i].votes[likeliest(matches[i]->probabilities)];
      for (std::size_t digit = 0; digit < places[i].probabilities.size(); ++digit)
        places[i].probabilities[digit] += matches[i]->probabilities[digit];
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

/// One way to read a place: a digit, or nothing there.
struct Choice {
  std::optional<std::size_t> digit;
};

/// The digits of the places when `place` is read as `choice` says and all others as most looks do.
std::string digitsWith(const std::vector<Place>& places, std::size_t looks, std::size_t place, Choice choice) {
  std::string digits;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (i == place) {
      if (choice.digit) digits += asCharacter(*choice.digit);
      continue;
    }
    if (2 * places[i].seen > static_cast<int>(looks)) digits += asCharacter(likeliest(places[i].probabilities));
  }
  return digits;
}

/// How else a place may be read by what the looks saw there.
std::vector<Choice> disputes(const Place& place, std::size_t looks) {
  const std::size_t first = likeliest(place.probabilities);
  const float support = place.probabilities[first];
  const auto unseen = static_cast<float>(static_cast<int>(looks) - place.seen);
  std::vector<Choice> choices;
  for (std::size_t digit = 0; digit < place.probabilities.size(); ++digit)
    if (digit != first && place.probabilities[digit] >= disputedShare * support) choices.push_back({digit});
  const bool isLeftOut = 2 * place.seen <= static_cast<int>(looks);
  if (isLeftOut && support >= disputedShare * unseen) choices.push_back({first});
  if (!isLeftOut && unseen >= disputedShare * support) choices.push_back({std::nullopt});
  return choices;
}

/// Whether the digits stand in groups as on a card: a digit lost or made up at an end leaves groups that no card has.
bool standInGroups(const std::vector<double>& positions) {
  SeenDigits digits;
  for (const double position : positions) digits.push_back({.position = position, .probabilities = {}});
  const auto pitch = pitchOf(digits);
  if (!pitch) return false;
  std::size_t group = 1;
  for (std::size_t i = 1; i < positions.size(); ++i, ++group) {
    if (positions[i] - positions[i - 1] < groupGap * *pitch) continue;
    if (group < shortestGroup) return false;
    group = 0;
  }
  return group >= shortestLastGroup;
}

struct Change {
  std::size_t place;
  Choice choice;
};

/// The one disputed digit that makes a card number of the places; absent when there is none, or several.
std::optional<Change> decidingChange(const std::vector<Place>& places, std::size_t looks) {
  std::optional<Change> deciding;
  std::size_t disputed = 0;
  for (std::size_t i = 0; i < places.size(); ++i)
    for (const Choice& choice : disputes(places[i], looks)) {
      ++disputed;
      if (!passesAsCardNumber(digitsWith(places, looks, i, choice))) continue;
      if (deciding) return std::nullopt;
      deciding = Change{i, choice};
    }
  return disputed <= mostDisputes ? deciding : std::nullopt;
}

}  // namespace

double VotedDigits::confidence() const {
  return agreement.empty() ? 0 : *std::ranges::min_element(agreement);
}

double supportFor(std::string_view number, std::span<const SeenDigits> looks) {
  if (number.empty() || looks.empty()) return 0;
  std::vector<int> agreeing(number.size(), 0);
  for (const SeenDigits& look : looks) {
    const std::string read = digitsOf(look);
    const std::size_t columns = read.size() + 1;
    std::vector<std::size_t> changes((number.size() + 1) * columns);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& { return changes[i * columns + j]; };
    for (std::size_t i = 0; i <= number.size(); ++i)
      for (std::size_t j = 0; j <= read.size(); ++j) {
        if (i == 0 || j == 0) {
          at(i, j) = i + j;
          continue;
        }
        const std::size_t replaced = at(i - 1, j - 1) + (number[i - 1] == read[j - 1] ? 0 : 1);
        at(i, j) = std::min({replaced, at(i - 1, j) + 1, at(i, j - 1) + 1});
      }
    for (std::size_t i = number.size(), j = read.size(); i > 0 && j > 0;) {
      const bool same = number[i - 1] == read[j - 1];
      if (at(i, j) == at(i - 1, j - 1) + (same ? 0 : 1)) {
        if (same) ++agreeing[i - 1];
        --i;
        --j;
      } else if (at(i, j) == at(i - 1, j) + 1) {
        --i;
      } else {
        --j;
      }
    }
  }
  return static_cast<double>(*std::ranges::min_element(agreeing)) / static_cast<double>(looks.size());
}

std::string digitsOf(const SeenDigits& look) {
  std::string digits;
  for (const SeenDigit& digit : look) digits += asCharacter(likeliest(digit.probabilities));
  return digits;
}

bool passesAsCardNumber(std::string_view digits) {
  if (!isValidCardNumber(digits) || !luhnCheck(digits)) return false;
  return digits.size() == shortestNumber || alwaysSixteen.find(digits.front()) == std::string_view::npos;
}

VotedDigits vote(std::span<const SeenDigits> looks) {
  const std::vector<Place> places = bestPlaces(looks);
  const std::size_t none = places.size();
  std::optional<Change> change;
  if (!passesAsCardNumber(digitsWith(places, looks.size(), none, {}))) change = decidingChange(places, looks.size());

  VotedDigits voted;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const Place& place = places[i];
    Choice choice;
    if (2 * place.seen > static_cast<int>(looks.size())) choice.digit = likeliest(place.probabilities);
    if (change && change->place == i) choice = change->choice;
    if (!choice.digit) continue;
    voted.digits += asCharacter(*choice.digit);
    voted.positions.push_back(place.position);
    voted.agreement.push_back(static_cast<double>(place.votes[*choice.digit]) / static_cast<double>(looks.size()));
  }
  if (!passesAsCardNumber(voted.digits)) return voted;
  const double mean = std::accumulate(voted.agreement.begin(), voted.agreement.end(), 0.0) /
                      static_cast<double>(voted.agreement.size());
  const double least = change ? disputedShare * leastAgreement : leastAgreement;
  voted.isSound = voted.confidence() >= least && mean >= leastMeanAgreement && standInGroups(voted.positions);
  return voted;
}

}  // namespace pravik
