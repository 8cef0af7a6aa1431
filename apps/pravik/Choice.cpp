#include "apps/pravik/Choice.h"

#include <algorithm>
#include <cstddef>

#include "Records/DocumentKind.h"

namespace pravik::cli {
namespace {

/// How many letters to add, drop, change or swap with the next one make one word of the other (optimal string
/// alignment).
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i)
    for (std::size_t j = 0; j <= b.size(); ++j) {
      std::size_t& here = cost[i][j];
      here = std::max(i, j);
      if (i == 0 || j == 0) continue;
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      here = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + change});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) here = std::min(here, cost[i - 2][j - 2] + 1);
    }
  return cost[a.size()][b.size()];
}

}  // namespace

std::string otherSpelling(std::string_view name) {
  if (name == "id-card") return "idCard";
  const auto found = std::ranges::find(documentKinds(), name, &DocumentKind::commandName);
  return found == documentKinds().end() ? std::string() : std::string(found->modeName);
}

std::optional<std::string> nearest(std::string_view word, std::span<const std::string> names) {
  // Longer words are no slips of the fingers, and would take long.
  constexpr std::size_t longestWord = 40;
  if (word.size() > longestWord || names.empty()) return std::nullopt;
  const auto best = std::ranges::min_element(names, {}, [&](const std::string& name) { return distance(word, name); });
  const std::size_t tolerated = std::max<std::size_t>(1, best->size() / 3);
  return distance(word, *best) <= tolerated ? std::optional(*best) : std::nullopt;
}

std::string suggestion(std::string_view word, std::span<const std::string> names) {
  const auto meant = nearest(word, names);
  return meant ? "; did you mean '" + *meant + "'?" : std::string();
}

}  // namespace pravik::cli
