#include "apps/pravik/ObservationCommands.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Parsers/BankCardParser.h"
#include "Parsers/IDCardBackParser.h"
#include "Parsers/IDCardFrontParser.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/ObservationInput.h"
#include "backends/json/Checks.h"
#include "backends/json/ObservationsJson.h"

namespace pravik::cli {
namespace {

using SceneType = PravikSDK::SceneType;

template <SceneType scene>
Answer validated(const Observations& observations) {
  try {
    validateScene(observations, scene);
    return {{"result", {{"accepted", true}}}};
  } catch (const OCRError& error) {
    return answerOf(error);
  }
}

constexpr std::array<ObservationCommand, 3> parseTable{
    {{"id-front", "The portrait side of an identity card", true, parsedAnswer<IDCardFrontParser>},
     {"id-back", "The emblem side of an identity card", true, parsedAnswer<IDCardBackParser>},
     {"bank-card", "A bank card", true, parsedAnswer<BankCardParser>}}};

constexpr std::array<ObservationCommand, 4> sceneTable{
    {{"idCard", "Either side of an identity card", false, validated<SceneType::idCard>},
     {"idCardFront", "The portrait side of an identity card", false, validated<SceneType::idCardFront>},
     {"idCardBack", "The emblem side of an identity card", false, validated<SceneType::idCardBack>},
     {"bankCard", "A bank card", false, validated<SceneType::bankCard>}}};

constexpr std::array<NamedScene, 4> sceneNames{{{"idCard", SceneType::idCard},
                                                {"idCardFront", SceneType::idCardFront},
                                                {"idCardBack", SceneType::idCardBack},
                                                {"bankCard", SceneType::bankCard}}};

Answer answerText(const ObservationCommand& command, const std::string& text) {
  const auto observations = parseObservations(text);
  if (!observations) return invalidInputAnswer(observations.error());
  const Answer answer = command.answer(*observations);
  return command.tellsKind ? withKind(command.kind, answer) : answer;
}

void answerLines(const ObservationCommand& command, std::istream& in, AnswerWriter& writer, const Host& host) {
  while (writer.works() && !host.stopped()) {
    const auto line = nextLine(in);
    if (!line) return;
    writer.write(answerText(command, *line));
  }
}

}  // namespace

std::span<const ObservationCommand> parseCommands() {
  return parseTable;
}
std::span<const ObservationCommand> sceneCommands() {
  return sceneTable;
}
std::span<const NamedScene> namedScenes() {
  return sceneNames;
}

ExitStatus answerObservations(const ObservationCommand& command, const std::string& file, const Settings& settings,
                              const Host& host) {
  AnswerWriter writer(host.out, settings.format);
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
    answerLines(command, in, writer, host);
  else
    writer.write(answerText(command, wholeText(in)));
  const ExitStatus status = writer.finish();
  return host.stopped() ? interrupted : status;
}

}  // namespace pravik::cli
