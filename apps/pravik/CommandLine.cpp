#include "apps/pravik/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <iterator>
#include <ostream>
#include <stdexcept>

#include "Records/PravikVersion.h"
#include "Utils/Day.h"
#include "apps/pravik/Choice.h"
#include "apps/pravik/Description.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/MeasurementCommands.h"
#include "apps/pravik/ObservationCommands.h"
#include "apps/pravik/PictureCommands.h"
#include "apps/pravik/ScanCommand.h"

namespace pravik::cli {
namespace {

/// Running more pictures at once than any machine has cores for only costs memory.
constexpr int maximumJobs = 256;
constexpr int maximumThreads = 256;
/// A week.
constexpr int maximumTimeout = 7 * 24 * 3600;

const Choices<Format> formats{
    {"table", Format::table}, {"json", Format::json}, {"jsonl", Format::jsonl}, {"csv", Format::csv}};

constexpr const char* overview =
    "Reads Chinese identity cards, bank cards, codes and text from pictures.\n\n"
    "Exit status: 0 all recognised, 1 at least one was not, 2 wrong usage, 3 the installation is incomplete.";
constexpr const char* examples =
    "Examples:\n"
    "  pravik id-front card.jpg                              one card, as a table\n"
    "  pravik id-back --format jsonl --jobs 2 cards/*.jpg    many cards, one line of JSON each\n"
    "  pravik bank-card --same-card a.jpg b.jpg              several photos of one bank card\n"
    "  pravik code --annotate marked label.png               also draw where the code was found\n"
    "  pravik text page.jpg                                  all text\n"
    "  pravik id-front --recursive cards                     a folder of pictures and those within it\n"
    "  pravik parse id-front --format jsonl blocks.jsonl     records from text that was read before\n"
    "  pravik scan clip.mp4 --mode bank-card                  the live scanner on a video, event by event\n"
    "  pravik doctor                                         what is installed and what is missing\n";
constexpr const char* scanNotes =
    "Each event is written with its second: state, hint, outline (as shares of the picture, from its lower left\n"
    "corner), timer, button, tap, capture, attempt (one that failed), and last the result: a record or an error.\n"
    "The first record ends the scan; so does the end of the video, the second photo that cannot be read, and the\n"
    "time that --timeout names. A file plays as fast as it can on its own time, on which reading a photo takes none,\n"
    "and gives the same events every time.\n\n"
    "Examples:\n"
    "  pravik scan clip.mp4 --mode bank-card                  a video file\n"
    "  pravik scan 0 --mode code --timeout 60              the first camera, for a minute at most\n"
    "  pravik scan clip.mp4 --mode id-front --format jsonl --realtime";
constexpr const char* observationFormat =
    "The input is one JSON object, or with --format jsonl one a line, each answered at once:\n"
    "  {\"observations\":[{\"text\":...,\"confidence\":...,\n"
    "                    \"boundingBox\":{\"x\":...,\"y\":...,\"width\":...,\"height\":...}}]}\n"
    "Boxes are fractions of the picture, measured from its lower left corner.";

/// What the words on the command line ask for.
struct Request {
  Settings settings;
  PictureNames pictures;
  std::string file = "-";
  bool isLiteral = false;
  PictureOptions options;
  ScanOptions scan;
  std::string (*description)(const CLI::App&) = nullptr;
  /// Whether the command that was named reads pictures, each of which gives a row.
  bool answersPictures = false;
  /// What to do; set by the command that was named.
  std::function<ExitStatus(const Request&, const Host&)> action;
};

Choices<SceneType> scenes() {
  Choices<SceneType> choices;
  for (const NamedScene& named : namedScenes()) choices.emplace_back(named.name, named.scene);
  return choices;
}

Choices<const DocumentKind*> kinds() {
  Choices<const DocumentKind*> choices;
  for (const DocumentKind& kind : documentKinds()) choices.emplace_back(kind.commandName, &kind);
  return choices;
}

/// Throws CLI::ValidationError for what is no time to wait; also for what is no number, which every range would let by.
std::chrono::milliseconds timeOf(const char* option, double seconds) {
  const bool isTime = seconds >= 0.001 && seconds <= maximumTimeout;
  if (!isTime)
    throw CLI::ValidationError(option, "must be between 0.001 and " + std::to_string(maximumTimeout) + " seconds");
  return std::chrono::milliseconds(std::llround(seconds * 1000));
}

/// From the one that tells least on.
Choices<OCRLogger::Level> logLevels() {
  const auto named = OCRLogger::levelsByName();
  Choices<OCRLogger::Level> levels(named.begin(), named.end());
  std::ranges::sort(levels, {}, &Choices<OCRLogger::Level>::value_type::second);
  return levels;
}

/// The options may stand before the command or behind it.
void addSharedOptions(CLI::App& app, Settings& settings) {
  addChoice(app, "--format", settings.format, formats, "How answers are written (table); csv for pictures only");
  addChoice(app, "--lang", settings.language, languagesByName(),
            "Language of the table's words (that of the environment)");
  addChoice(app, "--log-level", settings.logLevel, logLevels(), "Log to standard error (none)");
  app.add_flag("--strict", settings.isStrict, "Exit with 1 also when a field is doubtful or a check failed");
  app.add_option("--annotate", settings.annotate, "Also write each picture with what was read drawn on it")
      ->type_name("DIR");
  app.add_option("--jobs", settings.jobs, "Pictures to read at the same time (1)")
      ->check(CLI::Range(1, maximumJobs).description(""))
      ->type_name("N");
  app.add_option("--threads", settings.threads,
                 "Threads that each of them may use (0: the cores are shared among them)")
      ->check(CLI::Range(0, maximumThreads).description(""))
      ->type_name("N");
  app.add_option("--models", settings.models, "Folder of the text models")->type_name("DIR");
}

/// Has the command, when it is named, ask for an action.
template <class Action>
void setAction(CLI::App& command, Request& request, const Action& action) {
  command.callback([&request, action] { request.action = action; });
}

CLI::App& addCommand(CLI::App& app, std::string_view name, std::string_view description, Request& request) {
  CLI::App& command = *app.add_subcommand(std::string(name), std::string(description));
  if (const std::string other = otherSpelling(name); !other.empty()) command.alias(other);
  addSharedOptions(command, request.settings);
  command.footer("");
  return command;
}

/// Throws CLI::ValidationError for what is no day of the calendar, written as 2026-01-31.
std::chrono::year_month_day dayOf(const std::string& text) {
  if (const auto day = dayNamed(text)) return *day;
  throw CLI::ValidationError("--date", "must be a day such as 2026-01-31");
}

void addReportOptions(CLI::App& command, const PictureCommand& picture, PictureOptions& options) {
  if (!picture.readsEveryCard)
    command.add_flag("--report", options.tellsReport,
                     "Also tell of every field how sure it is and where it stands, and where the card is");
  command
      .add_option(
          "--crops", options.crops,
          "Also write the card, the portrait and the row of the number, cut out, into a folder for each picture")
      ->type_name("DIR");
  command
      .add_option_function<std::string>(
          "--date", [&options](const std::string& day) { options.limits.date = dayOf(day); },
          "The day by which a card has expired or not (today)")
      ->type_name("YYYY-MM-DD");
}

/// The options that a command has beside those that all share.
void addOwnOptions(CLI::App& command, const PictureCommand& picture, Request& request) {
  PictureOptions& options = request.options;
  command
      .add_option_function<double>(
          "--time-limit", [&options](double time) { options.limits.time = timeOf("--time-limit", time); },
          "Seconds that reading one picture may take (10)")
      ->type_name("SECONDS");
  command.add_option("--debug-images", options.debugImages, "Write the pictures of every stage (they show the card)")
      ->type_name("DIR");
  if (picture.document == nullptr)
    addChoice(command, "--scene", options.scene, scenes(),
              "The kind of document, which decides how the picture is prepared (id-card)");
  if (picture.readsCards()) addReportOptions(command, picture, options);
  if (picture.document == nullptr || picture.document->mode != OCRScanMode::bankCard) return;
  command.add_flag("--same-card", options.sameCard, "All pictures show one card: one answer for all of them");
  command.add_flag("--stages", options.tellsStage, "Tell the stage that gave the number: first, retry, band or fusion");
}

void addPictureNames(CLI::App& command, PictureNames& names) {
  command
      .add_option("IMAGE", names.inputs,
                  "Pictures (JPEG, PNG, BMP, WebP, HEIC, TIFF, PDF), or folders of them; - for standard input")
      ->type_name("");
  command.add_option("--files-from", names.list, "Also read what a file names, one a line; - for standard input")
      ->type_name("FILE");
  command.add_flag("--null,-0", names.isListNul, "The names in that file end with a NUL, as find -print0 writes them");
  command.add_flag("--recursive,-r", names.isRecursive, "Folders also stand for the folders within them");
}

/// Throws std::runtime_error when nothing is named, or the standard input is asked for twice.
void requireOneUseOfInput(const PictureNames& names) {
  if (names.inputs.empty() && names.list.empty())
    throw std::runtime_error("no pictures are named: give files or folders, or --files-from FILE");
  const auto uses = std::ranges::count(names.inputs, "-") + (names.list == "-" ? 1 : 0);
  if (uses > 1) throw std::runtime_error("the standard input can be used once");
}

void addPictureCommands(CLI::App& app, Request& request) {
  for (const PictureCommand& picture : pictureCommands()) {
    CLI::App& command = addCommand(app, picture.kind, picture.description, request);
    addPictureNames(command, request.pictures);
    command.parse_complete_callback([&request] { request.answersPictures = true; });
    addOwnOptions(command, picture, request);
    command.footer("Example:\n  pravik " + std::string(picture.kind) + " --format jsonl --jobs 2 pictures/*.jpg");
    setAction(command, request, [&picture](const Request& wanted, const Host& host) {
      PictureOptions options = wanted.options;
      options.limits.stop = host.stop;
      requireOneUseOfInput(wanted.pictures);
      return answerPictures(picture, wanted.pictures, options, wanted.settings, host);
    });
  }
}

void addObservationCommands(CLI::App& app, std::string_view name, std::string_view description,
                            std::span<const ObservationCommand> kinds, Request& request) {
  CLI::App& command = addCommand(app, name, description, request);
  command.require_subcommand(0, 1);
  for (const ObservationCommand& kind : kinds) {
    CLI::App& sub = addCommand(command, kind.kind, kind.description, request);
    sub.add_option("FILE", request.file, "File to read; - for standard input (-)")->type_name("");
    sub.add_flag("--literal", request.isLiteral,
                 "Take the text to the letter: undo nothing that a photograph does to it");
    sub.footer(observationFormat);
    setAction(sub, request, [&kind](const Request& wanted, const Host& host) {
      const TextHandling handling = wanted.isLiteral ? TextHandling::literal : TextHandling::corrected;
      return answerObservations(kind, wanted.file, handling, wanted.settings, host);
    });
  }
}

void addScanCommand(CLI::App& app, Request& request) {
  CLI::App& command = addCommand(app, "scan", "Run the live scanner on a video or a camera, without a window", request);
  command.add_option("SOURCE", request.scan.source, "A video file, or the number or device file of a camera")
      ->required()
      ->type_name("");
  addChoice(command, "--mode", request.scan.kind, kinds(), "What to look for")->required();
  command.add_flag("--realtime", request.scan.isRealTime, "Play a file at its speed; a camera has no other");
  command.add_flag("--loop", request.scan.loops, "Play a file again and again");
  command.add_flag("--cutout", request.scan.cutsToCutout, "Cut photos to the frame on the screen, if cards lie in it");
  command.add_flag_callback(
      "--no-tap", [&request] { request.scan.tapsManualCapture = false; },
      "Do not tap the manual-capture button when it is offered");
  command
      .add_option_function<double>(
          "--timeout", [&request](double time) { request.scan.timeout = timeOf("--timeout", time); },
          "Give up after so many seconds")
      ->type_name("SECONDS");
  command.footer(scanNotes);
  setAction(command, request,
            [](const Request& wanted, const Host& host) { return scan(wanted.scan, wanted.settings, host); });
}

void addOtherCommands(CLI::App& app, Request& request) {
  for (const MeasurementCommand& measurement : measurementCommands()) {
    CLI::App& command = addCommand(app, std::string(measurement.kind), std::string(measurement.description), request);
    command.add_option("IMAGE", request.file, "A picture file; - for standard input")->required()->type_name("");
    setAction(command, request, [&measurement](const Request& wanted, const Host& host) {
      return answerMeasurement(measurement, wanted.file, wanted.settings, host);
    });
  }
  setAction(addCommand(app, "doctor", "Show what is installed and what is missing", request), request,
            [](const Request& wanted, const Host& host) { return doctor(wanted.settings, host); });
}

/// For whoever builds a package.
void addDescriptions(CLI::App& app, Request& request) {
  static const Choices<std::string (*)(const CLI::App&)> forms{
      {"man", manPage}, {"bash", bashCompletion}, {"zsh", zshCompletion}, {"fish", fishCompletion}};
  CLI::App& command = *app.add_subcommand("describe", "Write the page for man, or the completion for a shell");
  command.group("");
  addChoice(command, "FORM", request.description, forms, "What to write")->required();
  setAction(command, request, [&app](const Request& wanted, const Host& host) {
    host.out << wanted.description(app) << std::flush;
    return allRecognized;
  });
}

/// The log goes to the error stream while a command runs.
class LogToErrors {
 public:
  LogToErrors(OCRLogger::Level level, std::ostream& err) {
    OCRLogger::setSink([&err](std::string_view line) { err << line << std::flush; });
    OCRLogger::setLevel(level);
  }
  ~LogToErrors() {
    OCRLogger::setLevel(OCRLogger::Level::none);
    OCRLogger::setSink({});
  }
  LogToErrors(const LogToErrors&) = delete;
  LogToErrors& operator=(const LogToErrors&) = delete;
};

/// The command that was named last; the program itself when none was.
const CLI::App& namedCommand(const CLI::App& app) {
  const auto named = app.get_subcommands();
  return named.empty() ? app : namedCommand(*named.front());
}

/// What is wrong with a word that nothing expects.
std::string complaintOf(const std::string& word, const CLI::App& command) {
  std::vector<std::string> names;
  if (word.starts_with('-')) {
    for (const CLI::Option* option : command.get_options())
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return "no option '" + word + "'" + suggestion(word, names);
  }
  for (const CLI::App* other : command.get_subcommands([](const CLI::App*) { return true; }))
    for (const std::string& name : {other->get_name(), otherSpelling(other->get_name())})
      if (!name.empty()) names.push_back(name);
  return names.empty() ? "unexpected word '" + word + "'" : "no command '" + word + "'" + suggestion(word, names);
}

/// An error in the words, for people.
std::string textOf(const CLI::ParseError& error, const CLI::App& app, const std::vector<std::string>& words) {
  const std::vector<std::string> unexpected = app.remaining(true);
  const auto first = std::ranges::find_first_of(words, unexpected);
  const bool isUnexpected = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && first != words.end();
  return isUnexpected ? complaintOf(*first, namedCommand(app)) : error.what();
}

}  // namespace

int run(const std::vector<std::string>& words, const Host& host) {
  Request request;
  CLI::App app(overview, "pravik");
  app.footer(examples);
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", "pravik " + PravikVersion::fullDescription());
  addSharedOptions(app, request.settings);
  addPictureCommands(app, request);
  addObservationCommands(app, "parse", "Records from text that something else has read", parseCommands(), request);
  addObservationCommands(app, "scene", "Check that a text belongs to a kind of document", sceneCommands(), request);
  addScanCommand(app, request);
  addOtherCommands(app, request);
  addDescriptions(app, request);

  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error, host.out, host.err);
    host.err << "pravik: " << textOf(error, app, words) << "\nRun with --help for more information.\n";
    return usageError;
  }
  if (!request.action) {
    host.err << app.help();
    return usageError;
  }
  if (request.settings.format == Format::csv && !request.answersPictures) {
    host.err << "pravik: --format: csv is for the commands that read pictures\n";
    return usageError;
  }
  const LogToErrors log(request.settings.logLevel, host.err);
  try {
    const ExitStatus status = request.action(request, host);
    if (!host.out) throw std::runtime_error("the output could not be written");
    return status;
  } catch (const std::exception& error) {
    host.err << "pravik: " << error.what() << '\n';
    return usageError;
  }
}

}  // namespace pravik::cli
