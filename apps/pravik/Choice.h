#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pravik::cli {

/// The kinds have one set of names, in two spellings: "id-front" as on the command line, "idCardFront" as in the code.
/// The second one of a name in the first; "idCard" for "id-card"; empty for what is no kind.
std::string otherSpelling(std::string_view name);

/// The name that a person most likely meant, "id-front" for "idfornt"; nothing when none is near.
std::optional<std::string> nearest(std::string_view word, std::span<const std::string> names);
/// "; did you mean 'id-front'?", or nothing.
std::string suggestion(std::string_view word, std::span<const std::string> names);

/// What an option can be, by its names.
template <class Value>
using Choices = std::vector<std::pair<std::string, Value>>;

/// The value of a name in either spelling; throws CLI::ValidationError, with the nearest name, for another word.
template <class Value>
const Value& chosen(const std::string& option, const Choices<Value>& choices, const std::string& word) {
  std::vector<std::string> names;
  for (const auto& [name, value] : choices) {
    if (word == name || word == otherSpelling(name)) return value;
    names.push_back(name);
  }
  throw CLI::ValidationError(option,
                             "'" + word + "' is none of " + CLI::detail::join(names, ", ") + suggestion(word, names));
}

/// An option whose value is one of the choices.
template <class Value, class Chosen>
CLI::Option* addChoice(CLI::App& app, const std::string& option, Chosen& value, const Choices<Value>& choices,
                       const std::string& description) {
  std::vector<std::string> names;
  for (const auto& [name, ignored] : choices) names.push_back(name);
  const auto choose = [&value, option, choices](const CLI::results_t& words) {
    value = chosen(option, choices, words.front());
    return true;
  };
  return app.add_option(option, choose, description)->type_name(CLI::detail::join(names, "|"));
}

}  // namespace pravik::cli
