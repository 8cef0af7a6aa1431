#include "apps/pravik/ScanCommand.h"

#include <exception>
#include <memory>
#include <stdexcept>

#include "Platform/ManualDispatch.h"
#include "apps/pravik/Installation.h"
#include "apps/pravik/ScanRun.h"
#include "backends/opencv/camera/VideoReader.h"

namespace pravik::cli {
namespace {

/// The size of a file's frames; nothing is known of a camera's before it runs. Throws with a readable text when there
/// are none to be had.
Size frameSize(const VideoSource& source) {
  if (!source.isCamera) {
    VideoReader reader(source);
    if (!reader.grab()) throw std::runtime_error("the video has no pictures");
    return reader.frameSize();
  }
  // That a camera may not be used is for the screen to say.
  std::error_code error;
  if (std::filesystem::exists(source.path, error) && !mayBeOpened(source)) return {};
  if (const std::string problem = problemWith(source); !problem.empty()) throw std::runtime_error(problem);
  return {};
}

ExitStatus answerUnusable(const ScanOptions& options, const std::string& reason, ScanEventWriter& writer) {
  Json event{{"time", 0.0}, {"event", "result"}, {"file", options.source}, {"kind", options.kind->commandName}};
  event.update(invalidInputAnswer(reason));
  writer.write(event);
  writer.finish();
  return someNotRecognized;
}

ExitStatus statusOf(const Answer& answer, const Settings& settings, const Host& host) {
  if (isRecognized(answer)) return allRecognized;
  if (answer["error"]["code"] == "recognition_failed")
    if (const auto broken = host.brokenModels(settings.models); !broken.empty())
      return reportIncomplete(broken, host.err);
  return someNotRecognized;
}

}  // namespace

ExitStatus scan(const ScanOptions& options, const Settings& settings, const Host& host) {
  if (options.kind->isCard())
    if (const auto missing = host.missingModels(settings.models); !missing.empty())
      return reportIncomplete(missing, host.err);

  ScanEventWriter writer(host.out, settings.format);
  const VideoSource source = videoSourceNamed(options.source);
  Size frame;
  try {
    frame = frameSize(source);
  } catch (const std::exception& error) {
    return answerUnusable(options, error.what(), writer);
  }
  const Platform platform = host.makePlatform({.modelDirectory = settings.models, .threads = settings.threads});
  const bool isRealTime = options.isRealTime || source.isCamera;
  const auto run = std::make_shared<ScanRun>(
      options, isRealTime ? platform.dispatch : std::make_shared<ManualDispatch>(), frame, writer);
  const bool isFinished = run->run(platform, [&host] { return host.stopped(); });
  writer.finish();
  return isFinished ? statusOf(run->answer(), settings, host) : interrupted;
}

}  // namespace pravik::cli
