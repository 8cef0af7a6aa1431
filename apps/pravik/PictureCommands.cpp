#include "apps/pravik/PictureCommands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>

#include "Utils/GuardedCall.h"
#include "apps/pravik/Annotation.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/Input.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/OrderedBatch.h"
#include "apps/pravik/Recording.h"

namespace pravik::cli {
namespace {

constexpr std::array<std::string_view, 4> stageNames{"first", "retry", "band", "fusion"};

std::vector<PictureCommand> makeCommands() {
  std::vector<PictureCommand> commands;
  for (const DocumentKind& kind : documentKinds()) commands.push_back({kind.commandName, kind.englishName, &kind});
  commands.push_back({"cards", "Every card on a picture, of whatever kind and however it lies", nullptr, true});
  commands.push_back({"text", "All text, line by line", nullptr});
  return commands;
}

/// What a picture is read with.
struct Reader {
  std::shared_ptr<Recording> recording = std::make_shared<Recording>();
  PravikSDK sdk;

  Reader(const Platform& platform, const PictureOptions& options) : sdk(recorded(platform, recording)) {
    sdk.setDebugSaveImagesToAlbum(!options.debugImages.empty());
  }
};

/// A bar that shows how far a batch is, redrawn on one line of a terminal; nothing when it is not shown. The line is
/// cleared when the bar goes away.
class Progress {
 public:
  Progress(std::ostream& terminal, std::size_t total, bool shown)
      : terminal_(terminal), total_(total), shown_(shown && total > 1) {}
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(std::size_t done) {
    if (!shown_) return;
    constexpr std::size_t width = 30;
    const std::size_t filled = width * done / total_;
    terminal_ << clearLine << '[' << std::string(filled, '#') << std::string(width - filled, '.') << "] " << done
              << " / " << total_ << std::flush;
  }

  /// Clears the line, so that something else can be written.
  void hide() {
    if (shown_) terminal_ << clearLine << std::flush;
  }

 private:
  /// Carriage return, then "erase to the end of the line" (ECMA-48, EL).
  static constexpr const char* clearLine = "\r\033[K";

  std::ostream& terminal_;
  std::size_t total_;
  bool shown_;
};

int threadsEach(const Settings& settings, int jobs) {
  if (settings.threads > 0) return settings.threads;
  const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  return std::max(1, cores / jobs);
}

void writeAnnotated(const ReadPicture& picture, const Answer& answer, const std::filesystem::path& path,
                    const ImageCodec& codec) {
  const std::vector<std::uint8_t> bytes = codec.encode(annotatedPicture(picture, answer), ImageFileFormat::jpeg);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

bool engineFailed(const Answer& answer) {
  return answer.contains("error") && answer["error"]["code"] == "recognition_failed";
}

/// {"file":…,"kind":…} and then the answer.
Answer withSource(const std::string& file, const PictureCommand& command, const Answer& answer) {
  Answer whole{{"file", file}, {"kind", command.kind}};
  whole.update(answer);
  return whole;
}

/// A folder that pictures are written to, or what is wrong with it.
std::optional<ExitStatus> problemWith(const std::filesystem::path& folder, std::string_view pictures,
                                      const Host& host) {
  if (folder.empty()) return std::nullopt;
  const std::string problem = problemWithFolder(folder);
  if (problem.empty()) return std::nullopt;
  host.err << "pravik: cannot write " << pictures << " to " << folder.string() << ": " << problem << '\n';
  return usageError;
}

/// What every picture of a batch is answered with.
struct Batch {
  const PictureCommand& command;
  const std::vector<std::string>& files;
  const PictureOptions& options;
  const Host& host;
  Platform platform;
  /// Where each annotated picture goes; empty when none are wanted.
  std::vector<std::filesystem::path> annotated;
};

Answer answerOne(const Batch& batch, Reader& reader, std::size_t item) {
  const auto image = readPicture(batch.files[item], *batch.platform.imageCodec, batch.host.in);
  if (!image) return answerOf(OCRError::invalidImage(), image.error());
  Answer result = answerPicture(batch.command, reader.sdk, *image, batch.options);
  if (const auto picture = reader.recording->take(); picture && !batch.annotated.empty())
    writeAnnotated(*picture, result, batch.annotated[item], *batch.platform.imageCodec);
  return result;
}

/// Whatever happens to one picture, a full disk or no memory for it, the others are still read.
Answer answerSafely(const Batch& batch, Reader& reader, std::size_t item) {
  try {
    return answerOne(batch, reader, item);
  } catch (...) {
    return answerOf(OCRError::recognitionFailed(textOf(std::current_exception())));
  }
}

/// An end of a batch: how many pictures were answered, and whether the engine failed on any.
struct BatchEnd {
  std::size_t done = 0;
  bool anyEngineFailed = false;
};

BatchEnd answerEach(const Batch& batch, int jobs, AnswerWriter& writer) {
  Progress progress(batch.host.err, batch.files.size(), batch.host.showsProgress);
  BatchEnd end;
  const auto answer = [&](std::size_t item) {
    Reader reader(batch.platform, batch.options);
    return answerSafely(batch, reader, item);
  };
  const auto take = [&](std::size_t item, const Answer& result) {
    progress.hide();
    writer.write(withSource(batch.files[item], batch.command, result));
    progress.show(item + 1);
    end.anyEngineFailed = end.anyEngineFailed || engineFailed(result);
    return writer.works();
  };
  end.done = runInOrder<Answer>(batch.files.size(), jobs, [&] { return batch.host.stopped(); }, answer, take);
  progress.hide();
  return end;
}

bool isSound(const Answer& answer) {
  return isRecognized(answer) && answer["checks"]["luhn"] == true;
}

/// One answer for all pictures: that of the first whose number passes the Luhn check; else what the fragments of the
/// failed ones give together; else the first number that was read at all; else the last error.
BatchEnd answerSameCard(const Batch& batch, AnswerWriter& writer) {
  Reader reader(batch.platform, batch.options);
  Progress progress(batch.host.err, batch.files.size(), batch.host.showsProgress);
  BatchEnd end;
  Answer best;
  std::string source;
  for (const std::string& file : batch.files) {
    if (batch.host.stopped()) return end;
    const Answer answer = answerSafely(batch, reader, end.done);
    end.anyEngineFailed = end.anyEngineFailed || engineFailed(answer);
    progress.show(++end.done);
    if (best.is_null() || isSound(answer) || !isRecognized(best)) {
      best = answer;
      source = file;
    }
    if (isSound(answer)) break;
  }
  progress.hide();
  if (!isSound(best)) {
    if (const auto fused = reader.sdk.tryCrossAttemptFusion()) {
      best = recordAnswer(*fused);
      if (batch.options.tellsStage) best["stage"] = "fusion";
    }
  }
  Answer whole = withSource(source, batch.command, best);
  whole["photos"] =
      std::vector<std::string>(batch.files.begin(), batch.files.begin() + static_cast<std::ptrdiff_t>(end.done));
  writer.write(whole);
  end.done = batch.files.size();
  return end;
}

}  // namespace

std::span<const PictureCommand> pictureCommands() {
  static const std::vector<PictureCommand> commands = makeCommands();
  return commands;
}

Answer answerPicture(const PictureCommand& command, const PravikSDK& sdk, const Image& image,
                     const PictureOptions& options) {
  if (command.readsEveryCard) {
    const auto cards = syncWait(sdk.recognizeCards(image, options.limits));
    return cards ? cardsAnswer(*cards) : answerOf(cards.error());
  }
  if (command.document == nullptr)
    return textAnswer(syncWait(sdk.recognizeRawText(image, options.scene, options.limits)));
  const auto reading = syncWait(sdk.read(image, command.document->mode, options.limits));
  if (!reading) return answerOf(reading.error());
  Answer answer = readingAnswer(*reading);
  if (const auto stage = reading->report.stage; stage && options.tellsStage)
    answer["stage"] = stageNames.at(static_cast<std::size_t>(*stage));
  return answer;
}

ExitStatus answerPictures(const PictureCommand& command, const std::vector<std::string>& files,
                          const PictureOptions& options, const Settings& settings, const Host& host) {
  if (command.readsText())
    if (const auto missing = host.missingModels(settings.models); !missing.empty())
      return reportIncomplete(missing, host.err);
  if (command.readsEveryCard && !settings.annotate.empty()) {
    host.err << "pravik: cards gives the corners of every card and draws no pictures: leave out --annotate\n";
    return usageError;
  }
  if (const auto problem = problemWith(settings.annotate, "annotated pictures", host)) return *problem;
  if (const auto problem = problemWith(options.debugImages, "debug pictures", host)) return *problem;

  const int jobs = options.sameCard ? 1 : std::min(settings.jobs, static_cast<int>(files.size()));
  Batch batch{.command = command,
              .files = files,
              .options = options,
              .host = host,
              .platform = host.makePlatform({.modelDirectory = settings.models,
                                             .threads = threadsEach(settings, jobs),
                                             .photoFolder = options.debugImages}),
              .annotated = {}};
  if (!settings.annotate.empty()) batch.annotated = annotatedPaths(settings.annotate, files);

  AnswerWriter writer(host.out, settings.format);
  const BatchEnd end = options.sameCard ? answerSameCard(batch, writer) : answerEach(batch, jobs, writer);
  const ExitStatus status = writer.finish();
  if (host.stopped() && (end.done < files.size() || status != allRecognized)) return interrupted;
  if (command.readsText() && end.anyEngineFailed)
    if (const auto broken = host.brokenModels(settings.models); !broken.empty())
      return reportIncomplete(broken, host.err);
  return status;
}

}  // namespace pravik::cli
