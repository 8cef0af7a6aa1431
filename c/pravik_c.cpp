#pragma GCC visibility push(default)
#include "c/pravik_c.h"
#pragma GCC visibility pop

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include "Pravik.h"
#include "Reading/TextToRecord.h"
#include "backends/DefaultPlatform.h"
#include "backends/json/Answer.h"
#include "backends/json/ObservationsJson.h"
#include "c/HandleLog.h"

struct pravik_handle {
  pravik::Platform platform;
  pravik::HandleLog log;
  std::atomic<std::chrono::milliseconds> timeLimit = pravik::ReadingLimits{}.time;
};

/// What a call gave, as texts that the caller may hold on to.
struct pravik_result {
  explicit pravik_result(const pravik::Answer& answer);

  pravik_status status = PRAVIK_OK;
  std::string json;
  /// Both empty without an error.
  std::string errorCode;
  std::string errorMessage;
};

namespace {

using namespace pravik;

/// The error codes in the order of their statuses, from 1 on.
constexpr std::array<std::string_view, PRAVIK_INTERNAL_ERROR> errorCodes{
    "recognition_failed", "parse_failure", "scene_mismatch",   "invalid_image",
    "insufficient_text",  "invalid_input", "invalid_argument", "internal_error"};

pravik_status statusOf(std::string_view errorCode) {
  const auto found = std::ranges::find(errorCodes, errorCode);
  return found == errorCodes.end() ? PRAVIK_INTERNAL_ERROR : static_cast<pravik_status>(found - errorCodes.begin() + 1);
}

/// {"error":{"code":…,"message":…}} for what is no error of the library proper.
Answer errorAnswer(pravik_status status, const std::string& message) {
  return {{"error", {{"code", errorCodes[static_cast<std::size_t>(status) - 1]}, {"message", message}}}};
}

Answer invalidArgumentAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INVALID_ARGUMENT, message);
}

Answer internalErrorAnswer(const std::string& message) {
  return errorAnswer(PRAVIK_INTERNAL_ERROR, message);
}

/// What a pravik_kind stands for; text is no kind of document.
struct Kind {
  std::string_view name;
  const DocumentKind* document;
};

/// In the order of pravik_kind.
const std::array<Kind, 5>& kinds() {
  static const auto kind = [](OCRScanMode mode) { return Kind{documentKind(mode).commandName, &documentKind(mode)}; };
  static const std::array<Kind, 5> all{kind(OCRScanMode::idCardFront), kind(OCRScanMode::idCardBack),
                                       kind(OCRScanMode::bankCard), kind(OCRScanMode::qrCode), Kind{"text", nullptr}};
  return all;
}

/// Null for a number that is no kind.
const Kind* kindOf(int number) {
  const auto index = static_cast<std::size_t>(number);
  return index < kinds().size() ? &kinds()[index] : nullptr;
}

Answer recognized(const pravik_handle& handle, const Kind& kind, const Image& image) {
  // One of its own for every call, so that what a failed photo gave is not kept.
  const PravikSDK sdk(handle.platform);
  const ReadingLimits limits{.time = handle.timeLimit.load()};
  if (kind.document == nullptr) return textAnswer(syncWait(sdk.recognizeRawText(image, SceneType::idCard, limits)));
  const auto reading = syncWait(sdk.read(image, kind.document->mode, limits));
  return reading ? readingAnswer(*reading) : answerOf(reading.error());
}

Answer parsed(const DocumentKind& kind, const Observations& observations) {
  const std::optional<Record> record = recordIn(observations, kind.mode);
  return record ? recordAnswer(*record) : answerOf(OCRError::insufficientText());
}

/// Makes the result of a call, whatever it throws; null when there is not even memory for that.
template <class Call>
pravik_result* resultOf(const Call& call) noexcept {
  try {
    try {
      return std::make_unique<pravik_result>(call()).release();
    } catch (const std::bad_alloc&) {
      return std::make_unique<pravik_result>(internalErrorAnswer("not enough memory")).release();
    } catch (const std::exception& error) {
      return std::make_unique<pravik_result>(internalErrorAnswer(error.what())).release();
    } catch (...) {
      return std::make_unique<pravik_result>(internalErrorAnswer("an unknown fault")).release();
    }
  } catch (...) {
    return nullptr;
  }
}

/// Loads a picture with `load` and reads it.
template <class Load>
Answer recognizedAnswer(const pravik_handle& handle, const Kind& kind, const Load& load) {
  Image image;
  try {
    image = load();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return withKind(kind.name, answerOf(OCRError::invalidImage(), error.what()));
  }
  return withKind(kind.name, recognized(handle, kind, image));
}

/// Checks what all the calls share; `source` is the picture.
template <class Load>
pravik_result* recognize(pravik_handle* handle, int kindNumber, const void* source, const Load& load) {
  return resultOf([&] {
    const Kind* kind = kindOf(kindNumber);
    if (handle == nullptr) return invalidArgumentAnswer("the handle is null");
    if (kind == nullptr) return invalidArgumentAnswer("there is no such kind");
    if (source == nullptr) return invalidArgumentAnswer("the picture is null");
    const LogScope scope(&handle->log);
    return recognizedAnswer(*handle, *kind, load);
  });
}

/// What is wrong with the layout of pixels in memory; null when nothing is.
const char* problemWith(int width, int height, std::size_t stride, int format) {
  if (format != PRAVIK_BGRA8 && format != PRAVIK_GREY8) return "there is no such pixel format";
  if (width < 1 || height < 1) return "a picture has at least one pixel";
  const std::size_t pixelBytes = format == PRAVIK_BGRA8 ? 4 : 1;
  if (stride / pixelBytes < static_cast<std::size_t>(width)) return "the stride does not hold a row";
  constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
  if (stride > most / static_cast<std::size_t>(height)) return "the stride is larger than the memory";
  return nullptr;
}

/// A picture of pixels that belong to the caller.
Image borrowed(const std::uint8_t* pixels, int width, int height, std::size_t stride, int format) {
  return {.bitmap = Bitmap(format == PRAVIK_BGRA8 ? PixelFormat::bgra8 : PixelFormat::grey8, width, height,
                           static_cast<std::ptrdiff_t>(stride), {pixels, [](const std::uint8_t*) {}})};
}

}  // namespace

pravik_result::pravik_result(const Answer& answer) : json(jsonText(answer)) {
  if (isRecognized(answer)) return;
  // From the text, where what is no UTF-8, such as the name of a folder, has been replaced.
  const auto error = Json::parse(json).at("error");
  errorCode = error.at("code").get<std::string>();
  errorMessage = error.at("message").get<std::string>();
  status = statusOf(errorCode);
}

const char* pravik_version(void) {
  return PravikSDK::version().c_str();
}

pravik_handle* pravik_create(const char* model_directory, int threads) {
  if (threads < 0) return nullptr;
  try {
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    auto handle = std::make_unique<pravik_handle>();
    handle->platform = makeDefaultPlatform(
        {.modelDirectory = model_directory == nullptr ? "" : model_directory, .threads = std::min(threads, cores)});
    // Without queues a call does all its work on the thread that it came on.
    handle->platform.dispatch.reset();
    return handle.release();
  } catch (...) {
    return nullptr;
  }
}

void pravik_destroy(pravik_handle* handle) {
  const std::unique_ptr<pravik_handle> last(handle);
}

pravik_status pravik_set_log(pravik_handle* handle, int level, pravik_log_function function, void* context) {
  try {
    const auto known = OCRLogger::levelFromRawValue(level);
    if (handle == nullptr || !known) return PRAVIK_INVALID_ARGUMENT;
    handle->log.send(*known, function, context);
    return PRAVIK_OK;
  } catch (...) {
    return PRAVIK_INTERNAL_ERROR;
  }
}

pravik_status pravik_set_time_limit(pravik_handle* handle, double seconds) {
  constexpr double mostSeconds = 7 * 24 * 3600;
  const bool isTime = seconds >= 0.001 && seconds <= mostSeconds;
  if (handle == nullptr || !isTime) return PRAVIK_INVALID_ARGUMENT;
  handle->timeLimit = std::chrono::milliseconds(std::llround(seconds * 1000));
  return PRAVIK_OK;
}

pravik_result* pravik_recognize_file(pravik_handle* handle, int kind, const char* path) {
  return recognize(handle, kind, path, [&] { return handle->platform.imageCodec->load(path); });
}

pravik_result* pravik_recognize_memory(pravik_handle* handle, int kind, const void* bytes, size_t size) {
  return recognize(handle, kind, bytes, [&] {
    return handle->platform.imageCodec->decode(std::span(static_cast<const std::uint8_t*>(bytes), size));
  });
}

pravik_result* pravik_recognize_pixels(pravik_handle* handle, int kind, const uint8_t* pixels, int width, int height,
                                       size_t stride, int format) {
  if (const char* problem = problemWith(width, height, stride, format))
    return resultOf([&] { return invalidArgumentAnswer(problem); });
  return recognize(handle, kind, pixels, [&] { return borrowed(pixels, width, height, stride, format); });
}

pravik_result* pravik_parse(int kindNumber, const char* observations) {
  return resultOf([&] {
    const Kind* kind = kindOf(kindNumber);
    if (kind == nullptr || kind->document == nullptr || !kind->document->isCard())
      return invalidArgumentAnswer("the kind is not that of a card");
    if (observations == nullptr) return invalidArgumentAnswer("the text is null");
    const LogScope nowhere(nullptr);
    const auto blocks = parseObservations(observations);
    return blocks ? withKind(kind->name, parsed(*kind->document, *blocks)) : invalidInputAnswer(blocks.error());
  });
}

pravik_status pravik_result_status(const pravik_result* result) {
  return result == nullptr ? PRAVIK_INTERNAL_ERROR : result->status;
}

const char* pravik_result_json(const pravik_result* result) {
  if (result == nullptr) return R"({"error":{"code":"internal_error","message":"not enough memory"}})";
  return result->json.c_str();
}

const char* pravik_result_error_code(const pravik_result* result) {
  return result == nullptr ? "internal_error" : result->errorCode.c_str();
}

const char* pravik_result_error_message(const pravik_result* result) {
  return result == nullptr ? "not enough memory" : result->errorMessage.c_str();
}

void pravik_result_free(pravik_result* result) {
  const std::unique_ptr<pravik_result> last(result);
}
