#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "Reading/TextToRecord.h"
#include "apps/pravik/Settings.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// What `pravik parse KIND` and `pravik scene KIND` do with the blocks of a picture that something else has read.
struct ObservationCommand {
  std::string_view kind;
  std::string_view description;
  /// Whether the kind stands in its answers.
  bool tellsKind;
  std::function<Answer(const Observations& observations, TextHandling handling)> answer;
};

/// The record of a card: parse id-front and so on.
std::span<const ObservationCommand> parseCommands();
/// Whether a text belongs to a kind of document: scene id-card and so on.
std::span<const ObservationCommand> sceneCommands();

/// A scene by its name, such as "id-front", with what it stands for.
struct NamedScene {
  std::string_view name;
  std::string_view description;
  SceneType scene;
};
std::span<const NamedScene> namedScenes();

/// Reads observations from the file, or from the standard input when it is "-": one object, or with the format jsonl
/// one a line, each answered before the next is read.
ExitStatus answerObservations(const ObservationCommand& command, const std::string& file, TextHandling handling,
                              const Settings& settings, const Host& host);

}  // namespace pravik::cli
