#include "apps/pravik/ObservationCommands.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <vector>

#include "Reading/PostCorrection.h"
#include "Reading/SceneValidation.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/Input.h"
#include "backends/json/ObservationsJson.h"

namespace pravik::cli {
namespace {

std::vector<NamedScene> makeScenes() {
  std::vector<NamedScene> scenes{{"id-card", "Identity card, either side", SceneType::idCard}};
  for (const DocumentKind& kind : documentKinds())
    if (kind.scene) scenes.push_back({kind.commandName, kind.englishName, *kind.scene});
  return scenes;
}

Answer validated(const Observations& observations, SceneType scene, TextHandling handling) {
  try {
    validateScene(handling == TextHandling::literal ? observations : postCorrected(observations, scene), scene);
    return {{"result", {{"accepted", true}}}};
  } catch (const OCRError& error) {
    return answerOf(error);
  }
}

std::vector<ObservationCommand> makeParseCommands() {
  std::vector<ObservationCommand> commands;
  for (const DocumentKind& kind : documentKinds()) {
    if (!kind.isCard()) continue;
    const auto parse = [mode = kind.mode](const Observations& observations, TextHandling handling) {
      const std::optional<Record> record = recordIn(observations, mode, handling);
      return record ? recordAnswer(*record) : answerOf(OCRError::insufficientText());
    };
    commands.push_back({kind.commandName, kind.englishName, true, parse});
  }
  return commands;
}

std::vector<ObservationCommand> makeSceneCommands() {
  std::vector<ObservationCommand> commands;
  for (const NamedScene& named : namedScenes())
    commands.push_back({named.name, named.description, false,
                        [scene = named.scene](const Observations& observations, TextHandling handling) {
                          return validated(observations, scene, handling);
                        }});
  return commands;
}

Answer answerText(const ObservationCommand& command, TextHandling handling, const std::string& text) {
  const auto observations = parseObservations(text);
  if (!observations) return invalidInputAnswer(observations.error());
  const Answer answer = command.answer(*observations, handling);
  return command.tellsKind ? withKind(command.kind, answer) : answer;
}

void answerLines(const ObservationCommand& command, TextHandling handling, std::istream& in, AnswerWriter& writer,
                 const Host& host) {
  while (writer.works() && !host.stopped()) {
    const auto line = nextLine(in);
    if (!line) return;
    writer.write(answerText(command, handling, *line));
  }
}

}  // namespace

std::span<const ObservationCommand> parseCommands() {
  static const std::vector<ObservationCommand> commands = makeParseCommands();
  return commands;
}
std::span<const ObservationCommand> sceneCommands() {
  static const std::vector<ObservationCommand> commands = makeSceneCommands();
  return commands;
}
std::span<const NamedScene> namedScenes() {
  static const std::vector<NamedScene> scenes = makeScenes();
  return scenes;
}

ExitStatus answerObservations(const ObservationCommand& command, const std::string& file, TextHandling handling,
                              const Settings& settings, const Host& host) {
  AnswerWriter writer(host.out, settings);
  std::ifstream opened;
  if (file != "-") {
    opened.open(file, std::ios::binary);
    std::error_code ignored;
    if (!opened || std::filesystem::is_directory(file, ignored)) {
      const int reason = opened ? EISDIR : errno;
      writer.write(invalidInputAnswer("cannot read " + file + ": " + std::generic_category().message(reason)));
      return writer.finish();
    }
  }
  std::istream& in = file == "-" ? host.in : opened;
  if (settings.format == Format::jsonl)
    answerLines(command, handling, in, writer, host);
  else
    writer.write(answerText(command, handling, wholeText(in)));
  const ExitStatus status = writer.finish();
  return host.stopped() ? interrupted : status;
}

}  // namespace pravik::cli
