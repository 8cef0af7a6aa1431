#include "apps/pravik/PictureCommands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <thread>

#include "apps/pravik/Annotation.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/Checks.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/OrderedBatch.h"
#include "apps/pravik/PictureInput.h"
#include "apps/pravik/Progress.h"
#include "apps/pravik/Recording.h"

namespace pravik::cli {
namespace {

using SceneType = PravikSDK::SceneType;

template <class Info>
Answer cardAnswer(const Result<Info>& result) {
  return result ? recordAnswer(*result) : answerOf(result.error());
}

Answer idFront(const PravikSDK& sdk, const Image& image, SceneType) {
  return cardAnswer(syncWait(sdk.recognizeIDCardFront(image)));
}

Answer idBack(const PravikSDK& sdk, const Image& image, SceneType) {
  return cardAnswer(syncWait(sdk.recognizeIDCardBack(image)));
}

Answer code(const PravikSDK& sdk, const Image& image, SceneType) {
  const auto result = syncWait(sdk.recognizeCode(image, OCRScanMode::qrCode));
  return result ? Answer{{"result", toJson(*result)}} : answerOf(result.error());
}

Answer rawText(const PravikSDK& sdk, const Image& image, SceneType scene) {
  const auto result = syncWait(sdk.recognizeRawText(image, scene));
  return result ? Answer{{"result", {{"text", *result}}}} : answerOf(result.error());
}

constexpr std::array<PictureCommand, 4> table{
    {{"id-front", "Read the portrait side of identity cards", "pravik id-front card.jpg", true, false, idFront},
     {"id-back", "Read the emblem side of identity cards", "pravik id-back --format jsonl --jobs 2 cards/*.jpg", true,
      false, idBack},
     {"code", "Read QR codes and bar codes", "pravik code label.png", false, false, code},
     {"text", "Read all text, line by line", "pravik text --scene bankCard page.jpg", true, true, rawText}}};

/// What one of the pictures that are read at the same time is read with.
struct Reader {
  std::shared_ptr<Recording> recording = std::make_shared<Recording>();
  PravikSDK sdk;

  explicit Reader(const Platform& platform) : sdk(recorded(platform, recording)) {}
};

int engineThreads(int jobs) {
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
  return !isRecognized(answer) && answer["error"]["code"] == "recognition_failed";
}

/// {"file":…,"kind":…} and then the answer.
Answer withSource(const std::string& file, const PictureCommand& command, const Answer& answer) {
  Answer whole{{"file", file}, {"kind", command.kind}};
  whole.update(answer);
  return whole;
}

}  // namespace

std::span<const PictureCommand> pictureCommands() {
  return table;
}

ExitStatus answerPictures(const PictureCommand& command, const std::vector<std::string>& files, SceneType scene,
                          const Settings& settings, const Host& host) {
  if (command.readsText)
    if (const auto missing = host.missingModels(settings.models); !missing.empty())
      return reportIncomplete(missing, host.err);

  const bool annotates = !settings.annotate.empty();
  if (annotates)
    if (const std::string problem = problemWithFolder(settings.annotate); !problem.empty()) {
      host.err << "pravik: cannot write annotated pictures to " << settings.annotate.string() << ": " << problem
               << '\n';
      return usageError;
    }
  const auto annotated = annotates ? annotatedPaths(settings.annotate, files) : std::vector<std::filesystem::path>{};

  const int jobs = std::min(settings.jobs, static_cast<int>(files.size()));
  const Platform platform = host.makePlatform({.modelDirectory = settings.models, .threads = engineThreads(jobs)});
  const std::vector<std::unique_ptr<Reader>> readers = [&] {
    std::vector<std::unique_ptr<Reader>> list;
    for (int i = 0; i < jobs; ++i) list.push_back(std::make_unique<Reader>(platform));
    return list;
  }();

  const auto answerOne = [&](int worker, std::size_t item) -> Answer {
    const auto image = readPicture(files[item], *platform.imageCodec, host.in);
    if (!image) return answerOf(OCRError::invalidImage(), image.error());
    Reader& reader = *readers[static_cast<std::size_t>(worker)];
    Answer result = command.answer(reader.sdk, *image, scene);
    if (const auto picture = reader.recording->take(); picture && annotates)
      writeAnnotated(*picture, result, annotated[item], *platform.imageCodec);
    return result;
  };
  // Whatever happens to one picture, a full disk or no memory for it, the others are still read.
  const auto answer = [&](int worker, std::size_t item) -> Answer {
    try {
      return answerOne(worker, item);
    } catch (const std::exception& error) {
      return answerOf(OCRError::recognitionFailed(error.what()));
    }
  };

  AnswerWriter writer(host.out, settings.format);
  Progress progress(host.err, files.size(), host.showsProgress);
  bool anyEngineFailed = false;
  const auto take = [&](std::size_t item, const Answer& result) {
    progress.hide();
    writer.write(withSource(files[item], command, result));
    progress.show(item + 1);
    anyEngineFailed = anyEngineFailed || engineFailed(result);
    return writer.works();
  };
  const std::size_t done = runInOrder<Answer>(files.size(), jobs, [&] { return host.stopped(); }, answer, take);
  progress.hide();

  const ExitStatus status = writer.finish();
  if (done < files.size() && host.stopped()) return interrupted;
  if (command.readsText && anyEngineFailed)
    if (const auto broken = host.brokenModels(settings.models); !broken.empty())
      return reportIncomplete(broken, host.err);
  return status;
}

}  // namespace pravik::cli
