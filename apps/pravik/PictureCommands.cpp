#include "apps/pravik/PictureCommands.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

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
  explicit Progress(const Host& host) : terminal_(host.err), shown_(host.showsProgress) {}
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Without a total, when more pictures may still be named, the number alone.
  void show(std::size_t done, std::optional<std::size_t> total) {
    if (!shown_ || total == 1U) return;
    constexpr std::size_t width = 30;
    terminal_ << clearLine;
    if (total) {
      const std::size_t filled = width * done / *total;
      terminal_ << '[' << std::string(filled, '#') << std::string(width - filled, '.') << "] " << done << " / "
                << *total << std::flush;
    } else {
      terminal_ << done << std::flush;
    }
  }

  /// Clears the line, so that something else can be written.
  void hide() {
    if (shown_) terminal_ << clearLine << std::flush;
  }

 private:
  /// Carriage return, then "erase to the end of the line" (ECMA-48, EL).
  static constexpr const char* clearLine = "\r\033[K";

  std::ostream& terminal_;
  bool shown_;
};

/// How many pictures are read at the same time. Of a list that may still be written not one is waited for.
int atOnce(const Settings& settings, PictureQueue& queue) {
  if (settings.jobs == 1 || !queue.count()) return settings.jobs;
  return std::max(1, static_cast<int>(queue.countAhead(static_cast<std::size_t>(settings.jobs))));
}

int threadsEach(const Settings& settings, int jobs) {
  if (settings.threads > 0) return settings.threads;
  const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  return std::max(1, cores / jobs);
}

void writePicture(const Bitmap& picture, const std::filesystem::path& path, const ImageCodec& codec) {
  const std::vector<std::uint8_t> bytes = codec.encode(picture, ImageFileFormat::jpeg);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string() + ": " + std::strerror(errno));
}

bool engineFailed(const Answer& answer) {
  return answer.contains("error") && answer["error"]["code"] == "recognition_failed";
}

/// {"file":…,"page":…,"kind":…} and then the answer.
Answer withSource(const PicturePage& page, const PictureCommand& command, const Answer& answer) {
  Answer whole{{"file", page.file}};
  if (page.page) whole["page"] = *page.page;
  whole["kind"] = command.kind;
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

/// A picture, where it goes when it is annotated, and the folder for what is cut out of it; nowhere without a path.
struct Item {
  PicturePage page;
  std::filesystem::path annotated;
  std::filesystem::path crops;
};

/// What every picture of a batch is answered with.
struct Batch {
  const PictureCommand& command;
  const PictureOptions& options;
  const Host& host;
  Platform platform;
  PictureQueue& queue;
  /// Where annotated pictures go, empty for none, and the names that they have there.
  std::filesystem::path annotate;
  std::set<std::string> annotated = {};
  /// The names of the folders for what is cut out.
  std::set<std::string> cropped = {};

  std::optional<Item> next() {
    auto page = queue.next();
    if (!page) return std::nullopt;
    Item item{*std::move(page), {}, {}};
    if (!annotate.empty()) item.annotated = freePath(annotate, item.page, "-annotated", ".jpg", annotated);
    if (!options.crops.empty()) item.crops = freePath(options.crops, item.page, "", "", cropped);
    return item;
  }
};

Answer answerOne(const Batch& batch, Reader& reader, const Item& item) {
  Image image;
  try {
    image = item.page.decode();
  } catch (const std::runtime_error& error) {
    return answerOf(OCRError::invalidImage(), error.what());
  }
  const ImageCodec& codec = *batch.platform.imageCodec;
  SaveCrop saveCrop;
  if (!item.crops.empty())
    saveCrop = [&](const Bitmap& crop, const std::string& name) {
      std::filesystem::create_directories(item.crops);
      writePicture(crop, item.crops / (name + ".jpg"), codec);
    };
  Answer result = answerPicture(batch.command, reader.sdk, image, batch.options, saveCrop);
  const auto picture = reader.recording->take();
  if (!picture || item.annotated.empty()) return result;
  const auto failure = failureOf([&] {
    const Bitmap annotated = result.contains("cards")
                                 ? annotatedCards(uprightBitmap(*image.bitmap, image.orientation), result)
                                 : annotatedPicture(*picture, result);
    writePicture(annotated, item.annotated, codec);
  });
  if (failure) result["problems"].push_back(*failure);
  return result;
}

/// Whatever happens to one picture, such as no memory for it, the others are still read.
Answer answerSafely(const Batch& batch, Reader& reader, const Item& item) {
  try {
    return answerOne(batch, reader, item);
  } catch (...) {
    return answerOf(OCRError::recognitionFailed(textOf(std::current_exception())));
  }
}

/// An end of a batch: how many pictures were answered and whether these are all, and whether the engine failed on any.
struct BatchEnd {
  std::size_t done = 0;
  bool isComplete = false;
  bool anyEngineFailed = false;
};

BatchEnd answerEach(Batch& batch, int jobs, AnswerWriter& writer) {
  Progress progress(batch.host);
  BatchEnd end;
  const auto answer = [&](const Item& item) {
    Reader reader(batch.platform, batch.options);
    return withSource(item.page, batch.command, answerSafely(batch, reader, item));
  };
  const auto take = [&](const Answer& result) {
    progress.hide();
    writer.write(result);
    progress.show(++end.done, batch.queue.count());
    end.anyEngineFailed = end.anyEngineFailed || engineFailed(result);
    return writer.works();
  };
  end.isComplete =
      runInOrder<Item, Answer>([&] { return batch.next(); }, jobs, [&] { return batch.host.stopped(); }, answer, take);
  return end;
}

bool isSound(const Answer& answer) {
  return isRecognized(answer) && answer["checks"]["luhn"] == true;
}

/// One answer for all pictures: that of the first whose number passes the Luhn check; else what the fragments of the
/// failed ones give together; else the first number that was read at all; else the last error.
BatchEnd answerSameCard(Batch& batch, AnswerWriter& writer) {
  Reader reader(batch.platform, batch.options);
  Progress progress(batch.host);
  BatchEnd end;
  Answer best;
  Json photos = Json::array(), problems = Json::array();
  while (!isSound(best)) {
    if (batch.host.stopped()) return end;
    const auto item = batch.next();
    if (!item) break;
    Answer answer = withSource(item->page, batch.command, answerSafely(batch, reader, *item));
    for (const Json& problem : answer.value("problems", Json::array())) problems.push_back(problem);
    answer.erase("problems");
    photos.push_back(item->page.file + (item->page.page ? ", page " + std::to_string(*item->page.page) : ""));
    end.anyEngineFailed = end.anyEngineFailed || engineFailed(answer);
    progress.show(++end.done, batch.queue.count());
    if (best.is_null() || isSound(answer) || !isRecognized(best)) best = std::move(answer);
  }
  progress.hide();
  end.isComplete = true;
  if (best.is_null()) return end;
  if (const auto fused = isSound(best) ? std::nullopt : reader.sdk.tryCrossAttemptFusion()) {
    for (const char* replaced :
         {"result", "checks", "error", "report", "warnings", "doubtful", "fields", "outline", "dotsPerMillimetre"})
      best.erase(replaced);
    best.update(recordAnswer(*fused));
    if (batch.options.tellsStage) best["stage"] = "fusion";
  }
  best["photos"] = photos;
  if (!problems.empty()) best["problems"] = problems;
  writer.write(best);
  return end;
}

}  // namespace

std::span<const PictureCommand> pictureCommands() {
  static const std::vector<PictureCommand> commands = makeCommands();
  return commands;
}

Answer answerPicture(const PictureCommand& command, const PravikSDK& sdk, const Image& image,
                     const PictureOptions& options, const SaveCrop& saveCrop) {
  const auto saveCrops = [&](const Reading& reading, const std::string& suffix, Answer& answer) {
    if (!saveCrop) return;
    const CardCrops crops = sdk.crops(image, reading);
    const auto save = [&](const std::optional<Bitmap>& crop, const std::string& name) {
      if (!crop) return;
      if (const auto failure = failureOf([&] { saveCrop(*crop, name + suffix); }))
        answer["problems"].push_back(*failure);
    };
    save(crops.card, "card");
    save(crops.portrait, "portrait");
    save(crops.number, "number");
  };
  if (command.readsEveryCard) {
    const auto cards = syncWait(sdk.recognizeCards(image, options.limits));
    if (!cards) return answerOf(cards.error());
    Answer answer = cardsAnswer(*cards);
    int number = 0;
    for (const CardReading& card : cards->cards) saveCrops(card.reading, "-" + std::to_string(++number), answer);
    return answer;
  }
  if (command.document == nullptr)
    return textAnswer(syncWait(sdk.recognizeRawText(image, options.scene, options.limits)));
  const auto reading = syncWait(sdk.read(image, command.document->mode, options.limits));
  if (!reading) return answerOf(reading.error());
  Answer answer = readingAnswer(*reading);
  saveCrops(*reading, "", answer);
  if (const auto stage = reading->report.stage; stage && options.tellsStage)
    answer["stage"] = stageNames.at(static_cast<std::size_t>(*stage));
  if (options.tellsReport && reading->record && command.document->isCard()) answer.update(reportJson(reading->report));
  return answer;
}

ExitStatus answerPictures(const PictureCommand& command, const PictureNames& names, const PictureOptions& options,
                          const Settings& settings, const Host& host) {
  if (command.readsText())
    if (const auto missing = host.missingModels(settings.models); !missing.empty())
      return reportIncomplete(missing, host.err);
  if (command.readsEveryCard && settings.format == Format::csv) {
    host.err << "pravik: cards answers with any number of cards, which no columns hold: leave out --format csv\n";
    return usageError;
  }
  if (const auto problem = problemWith(settings.annotate, "annotated pictures", host)) return *problem;
  if (const auto problem = problemWith(options.crops, "crops", host)) return *problem;
  if (const auto problem = problemWith(options.debugImages, "debug pictures", host)) return *problem;

  // Any platform's codec counts the pictures, among which the threads of the one that reads them are shared.
  const std::shared_ptr<const ImageCodec> codec = host.makePlatform({}).imageCodec;
  PictureQueue queue(names, *codec, host.in);
  const int jobs = options.sameCard ? 1 : atOnce(settings, queue);
  Batch batch{.command = command,
              .options = options,
              .host = host,
              .platform = host.makePlatform({.modelDirectory = settings.models,
                                             .threads = threadsEach(settings, jobs),
                                             .photoFolder = options.debugImages}),
              .queue = queue,
              .annotate = settings.annotate};

  AnswerWriter writer(host.out, settings, command.document);
  const BatchEnd end = options.sameCard ? answerSameCard(batch, writer) : answerEach(batch, jobs, writer);
  const ExitStatus status = writer.finish();
  if (host.stopped() && (!end.isComplete || status != allRecognized)) return interrupted;
  if (command.readsText() && end.anyEngineFailed)
    if (const auto broken = host.brokenModels(settings.models); !broken.empty())
      return reportIncomplete(broken, host.err);
  if (end.done == 0) throw std::runtime_error("the list names no pictures");
  return status;
}

}  // namespace pravik::cli
